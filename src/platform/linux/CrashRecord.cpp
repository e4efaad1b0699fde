#include "platform/linux/CrashRecord.h"

#include "foundation/Json.h"

#include <csignal>
#include <cstring>
#include <cxxabi.h>
#include <elf.h>
#include <fstream>
#include <memory>
#include <vector>

namespace orvan {

namespace {

std::string fixedText(const char* text, std::size_t size) {
    std::size_t n = 0;
    while (n < size && text[n]) ++n;
    return std::string(text, n);
}

std::string demangled(const std::string& mangled) {
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> out(abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status), std::free);
    return status == 0 && out ? std::string(out.get()) : mangled;
}

template <class T> bool readAt(std::ifstream& in, std::uint64_t at, T& out) {
    in.seekg(static_cast<std::streamoff>(at));
    in.read(reinterpret_cast<char*>(&out), sizeof out);
    return static_cast<bool>(in);
}

} // namespace

std::filesystem::path CrashRecords::pendingFile(const std::filesystem::path& folder) { return folder / "companion-crash.pending"; }

std::optional<CrashRecord> CrashRecords::read(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    auto record = std::make_unique<CrashRecord>();
    in.read(reinterpret_cast<char*>(record.get()), sizeof(CrashRecord));
    if (in.gcount() != static_cast<std::streamsize>(sizeof(CrashRecord))) return std::nullopt;
    if (std::memcmp(record->magic, CrashRecord::magicText, sizeof record->magic) != 0) return std::nullopt;
    if (record->layout != sizeof(CrashRecord)) return std::nullopt;
    if (record->frameCount < 0 || record->frameCount > CrashRecord::maxFrames) return std::nullopt;
    if (record->moduleCount < 0 || record->moduleCount > CrashRecord::maxModules) return std::nullopt;
    return *record;
}

std::string CrashRecords::signalName(int signal) {
    switch (signal) {
    case SIGSEGV: return "SIGSEGV";
    case SIGBUS: return "SIGBUS";
    case SIGILL: return "SIGILL";
    case SIGFPE: return "SIGFPE";
    case SIGABRT: return "SIGABRT";
    case SIGTRAP: return "SIGTRAP";
    default: return "Signal " + std::to_string(signal);
    }
}

std::optional<std::string> CrashRecords::buildId(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    Elf64_Ehdr header{};
    if (!readAt(in, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64)
        return std::nullopt;
    if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_phnum > 256) return std::nullopt;
    for (int i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment{};
        if (!readAt(in, header.e_phoff + static_cast<std::uint64_t>(i) * sizeof segment, segment)) return std::nullopt;
        if (segment.p_type != PT_NOTE || segment.p_filesz > 64 * 1024) continue;
        std::vector<unsigned char> notes(segment.p_filesz);
        in.seekg(static_cast<std::streamoff>(segment.p_offset));
        in.read(reinterpret_cast<char*>(notes.data()), static_cast<std::streamsize>(notes.size()));
        if (!in) return std::nullopt;
        const std::size_t align = segment.p_align == 8 ? 8 : 4;
        auto up = [&](std::size_t n) { return (n + align - 1) & ~(align - 1); };
        std::size_t at = 0;
        while (at + sizeof(Elf64_Nhdr) <= notes.size()) {
            Elf64_Nhdr note{};
            std::memcpy(&note, notes.data() + at, sizeof note);
            const std::size_t nameAt = at + sizeof note, descAt = nameAt + up(note.n_namesz);
            if (descAt > notes.size() || note.n_descsz > notes.size() - descAt) break;
            if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 &&
                std::memcmp(notes.data() + nameAt, "GNU", 4) == 0 && note.n_descsz > 0) {
                unsigned char bytes[16] = {};
                std::memcpy(bytes, notes.data() + descAt, std::min<std::size_t>(16, note.n_descsz));
                static const char digits[] = "0123456789ABCDEF";
                std::string uuid;
                for (int b = 0; b < 16; ++b) {
                    if (b == 4 || b == 6 || b == 8 || b == 10) uuid += '-';
                    uuid += digits[bytes[b] >> 4];
                    uuid += digits[bytes[b] & 15];
                }
                return uuid;
            }
            at = descAt + up(note.n_descsz);
        }
    }
    return std::nullopt;
}

CrashDiagnostic CrashRecords::diagnostic(const CrashRecord& record, const std::string& os, const std::string& device) {
    CrashDiagnostic crash;
    crash.meta.applicationVersion = fixedText(record.version, sizeof record.version);
    crash.meta.applicationBuildVersion = fixedText(record.build, sizeof record.build);
    crash.meta.osVersion = os;
    crash.meta.deviceType = device;
    crash.signal = record.signal;
    crash.exceptionCode = record.code;
    crash.terminationReason = signalName(record.signal);
    if (const std::string type = fixedText(record.exceptionType, sizeof record.exceptionType); !type.empty()) {
        crash.exceptionName = demangled(type);
        crash.exceptionReason = "Uncaught exception of type " + *crash.exceptionName;
    }

    struct Known {
        std::string name;
        std::optional<std::string> uuid;
    };
    std::vector<Known> modules;
    for (int i = 0; i < record.moduleCount; ++i) {
        const std::filesystem::path path(fixedText(record.modules[i].path, CrashRecord::maxPath));
        modules.push_back({path.filename().string(), buildId(path)});
    }
    // Root first: where the thread stopped, each caller one level down.
    Json chain = Json::array();
    for (int i = record.frameCount - 1; i >= 0; --i) {
        const CrashRecord::Frame& f = record.frames[i];
        Json frame = Json::object();
        if (f.module >= 0 && f.module < static_cast<int>(modules.size())) {
            const Known& module = modules[static_cast<std::size_t>(f.module)];
            if (module.uuid) frame["binaryUUID"] = *module.uuid;
            frame["binaryName"] = module.name;
            // A caller's address is where it will go on, after the call: one byte back is the call.
            frame["offsetIntoBinaryTextSegment"] = static_cast<std::int64_t>(f.offset - (i > 0 ? 1 : 0));
        }
        frame["sampleCount"] = 1;
        frame["subFrames"] = chain;
        chain = Json::array({frame});
    }
    Json tree = {{"callStackPerThread", true},
                 {"callStacks", Json::array({{{"threadAttributed", true}, {"callStackRootFrames", chain}}})}};
    crash.meta.callStackTree = tree.dump();
    return crash;
}

} // namespace orvan
