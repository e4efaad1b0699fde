#include "platform/linux/CrashHandler.h"

#include "foundation/Files.h"
#include "platform/linux/CrashRecord.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <exception>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/ucontext.h>
#include <time.h>
#include <typeinfo>
#include <unistd.h>

// Everything reached from the signal handler uses only async-signal-safe system calls (open, read,
// write, close, mkdir, rename, clock_gettime, sigaction, raise, nanosleep) and static storage: the
// heap, locks and stdio may be what broke. The reading of other frames' stack words is kept out of
// AddressSanitizer's sight, since those words lie in redzones it would report.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORVAN_NO_ASAN __attribute__((no_sanitize("address")))
#endif
#endif
#if !defined(ORVAN_NO_ASAN) && defined(__SANITIZE_ADDRESS__)
#define ORVAN_NO_ASAN __attribute__((no_sanitize("address")))
#endif
#if !defined(ORVAN_NO_ASAN)
#define ORVAN_NO_ASAN
#endif

namespace orvan {

namespace {

constexpr int fatalSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP};
constexpr std::size_t maxPending = 4096;
// A stack overflow leaves no room to run on; this is where the handler runs instead.
constexpr std::size_t altStackSize = 64 * 1024;
// How far above the stack pointer return addresses are looked for when frame pointers give out.
constexpr std::uintptr_t scanBytes = 32 * 1024;
constexpr int maxMappings = 4096;

struct Mapping {
    std::uintptr_t start, end, offset;
    bool readable, executable;
    int pathAt, pathLength; // into mapsText
};

// Static: nothing is allocated once a crash is under way.
char pendingPath[maxPending];
char pendingFolder[maxPending];
char versionText[32];
char buildText[32];
alignas(16) char altStack[altStackSize];
char mapsText[512 * 1024];
std::size_t mapsLength;
Mapping mappings[maxMappings];
int mappingCount;
CrashRecord record;
const char* uncaughtType; // set by the terminate handler before it aborts
std::atomic<int> entered{0};
std::atomic<bool> done{false};
bool installedFlag = false;
struct sigaction previous[sizeof fatalSignals / sizeof fatalSignals[0]];

void copyText(char* to, std::size_t size, const char* from) {
    std::size_t i = 0;
    for (; from && from[i] && i + 1 < size; ++i) to[i] = from[i];
    to[i] = '\0';
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads /proc/self/maps as it stands at the crash, with read() into static storage.
void readMappings() {
    mapsLength = 0;
    mappingCount = 0;
    int fd = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    while (mapsLength < sizeof mapsText) {
        ssize_t n = ::read(fd, mapsText + mapsLength, sizeof mapsText - mapsLength);
        if (n <= 0) break;
        mapsLength += static_cast<std::size_t>(n);
    }
    ::close(fd);
    std::size_t i = 0;
    while (i < mapsLength && mappingCount < maxMappings) {
        Mapping m{};
        auto hex = [&](std::uintptr_t& out) {
            out = 0;
            int d;
            while (i < mapsLength && (d = hexDigit(mapsText[i])) >= 0) {
                out = out * 16 + static_cast<std::uintptr_t>(d);
                ++i;
            }
        };
        hex(m.start);
        if (i < mapsLength && mapsText[i] == '-') ++i;
        hex(m.end);
        if (i < mapsLength && mapsText[i] == ' ') ++i;
        if (i + 4 <= mapsLength) {
            m.readable = mapsText[i] == 'r';
            m.executable = mapsText[i + 2] == 'x';
            i += 4;
        }
        if (i < mapsLength && mapsText[i] == ' ') ++i;
        hex(m.offset);
        // Device and inode, then the path after the spaces, if any.
        for (int field = 0; field < 2; ++field) {
            while (i < mapsLength && mapsText[i] == ' ') ++i;
            while (i < mapsLength && mapsText[i] != ' ' && mapsText[i] != '\n') ++i;
        }
        while (i < mapsLength && mapsText[i] == ' ') ++i;
        m.pathAt = static_cast<int>(i);
        while (i < mapsLength && mapsText[i] != '\n') ++i;
        m.pathLength = static_cast<int>(i) - m.pathAt;
        if (i < mapsLength) ++i;
        if (m.end > m.start) mappings[mappingCount++] = m;
    }
}

const Mapping* mappingOf(std::uintptr_t address) {
    for (int i = 0; i < mappingCount; ++i)
        if (address >= mappings[i].start && address < mappings[i].end) return &mappings[i];
    return nullptr;
}

bool samePath(const Mapping& a, const Mapping& b) {
    if (a.pathLength != b.pathLength) return false;
    for (int i = 0; i < a.pathLength; ++i)
        if (mapsText[a.pathAt + i] != mapsText[b.pathAt + i]) return false;
    return true;
}

bool readable(std::uintptr_t address, std::size_t bytes) {
    const Mapping* m = mappingOf(address);
    return m && m->readable && address + bytes <= m->end;
}

ORVAN_NO_ASAN std::uintptr_t wordAt(std::uintptr_t address) {
    return *reinterpret_cast<const volatile std::uintptr_t*>(address);
}

ORVAN_NO_ASAN unsigned char byteAt(std::uintptr_t address) {
    return *reinterpret_cast<const volatile unsigned char*>(address);
}

// A return address: inside code from a file, right after a call instruction.
bool returnAddress(std::uintptr_t address) {
    const Mapping* m = mappingOf(address);
    if (!m || !m->executable || m->pathLength == 0 || mapsText[m->pathAt] != '/') return false;
#if defined(__x86_64__)
    if (address < m->start + 7 || !readable(address - 7, 7)) return false;
    if (byteAt(address - 5) == 0xE8) return true; // call rel32
    // call through a register or memory: FF /2, two to seven bytes long
    for (std::uintptr_t back = 2; back <= 7; ++back) {
        const unsigned char op = byteAt(address - back);
        const unsigned char modrm = byteAt(address - back + 1);
        if (op == 0xFF && ((modrm >> 3) & 7) == 2) return true;
    }
    return false;
#elif defined(__aarch64__)
    if (address < m->start + 4 || (address & 3) || !readable(address - 4, 4)) return false;
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) word |= static_cast<std::uint32_t>(byteAt(address - 4 + i)) << (8 * i);
    return (word & 0xFC000000u) == 0x94000000u || (word & 0xFFFFFC1Fu) == 0xD63F0000u; // bl, blr
#else
    return true;
#endif
}

void addFrame(std::uintptr_t pc) {
    if (record.frameCount >= CrashRecord::maxFrames) return;
    CrashRecord::Frame& frame = record.frames[record.frameCount++];
    frame.module = -1;
    frame.offset = pc;
    const Mapping* m = mappingOf(pc);
    if (!m || m->pathLength == 0 || mapsText[m->pathAt] != '/') return;
    // The load address is the file's mapping at offset 0.
    std::uintptr_t base = 0;
    bool found = false;
    for (int i = 0; i < mappingCount && !found; ++i)
        if (mappings[i].offset == 0 && samePath(mappings[i], *m)) {
            base = mappings[i].start;
            found = true;
        }
    if (!found) return;
    int index = -1;
    for (int i = 0; i < record.moduleCount && index < 0; ++i) {
        const char* path = record.modules[i].path;
        int n = 0;
        while (n < CrashRecord::maxPath && path[n]) ++n;
        bool same = n == m->pathLength;
        for (int k = 0; same && k < n; ++k) same = path[k] == mapsText[m->pathAt + k];
        if (same) index = i;
    }
    if (index < 0 && record.moduleCount < CrashRecord::maxModules && m->pathLength < CrashRecord::maxPath) {
        index = record.moduleCount++;
        for (int k = 0; k < m->pathLength; ++k) record.modules[index].path[k] = mapsText[m->pathAt + k];
        record.modules[index].path[m->pathLength] = '\0';
    }
    if (index < 0) return;
    frame.module = index;
    frame.offset = pc - base;
}

// Frame 0 is where the thread stopped. Above it, frames without a frame pointer (the C library's
// raise and abort, the runtime's exception machinery) are found by their return addresses on the
// stack, up to the first frame-pointer frame; from there the frame-pointer chain is followed.
ORVAN_NO_ASAN void walk(std::uintptr_t pc, std::uintptr_t sp, std::uintptr_t fp) {
    addFrame(pc);
    const Mapping* stack = mappingOf(sp);
    if (!stack) return;
    const std::uintptr_t top = stack->end;
    const bool chained = fp >= sp && fp + 2 * sizeof(std::uintptr_t) <= top && (fp % sizeof(std::uintptr_t)) == 0;
    const std::uintptr_t scanEnd = chained ? fp : (sp + scanBytes < top ? sp + scanBytes : top);
    for (std::uintptr_t at = sp & ~(sizeof(std::uintptr_t) - 1); at + sizeof(std::uintptr_t) <= scanEnd;
         at += sizeof(std::uintptr_t)) {
        if (record.frameCount >= CrashRecord::maxFrames) return;
        const std::uintptr_t word = wordAt(at);
        if (returnAddress(word)) addFrame(word);
    }
    while (chained && record.frameCount < CrashRecord::maxFrames) {
        const std::uintptr_t next = wordAt(fp);
        const std::uintptr_t ret = wordAt(fp + sizeof(std::uintptr_t));
        if (ret && returnAddress(ret)) addFrame(ret);
        if (next <= fp || next + 2 * sizeof(std::uintptr_t) > top || (next % sizeof(std::uintptr_t)) != 0) break;
        fp = next;
    }
}

void writeAll(int fd, const void* data, std::size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        ssize_t n = ::write(fd, p, size);
        if (n <= 0) return;
        p += n;
        size -= static_cast<std::size_t>(n);
    }
}

void recordCrash(int signal, const siginfo_t* info, const ucontext_t* context) {
    for (std::size_t i = 0; i < sizeof record; ++i) reinterpret_cast<char*>(&record)[i] = 0;
    for (int i = 0; i < 8; ++i) record.magic[i] = CrashRecord::magicText[i];
    record.layout = sizeof(CrashRecord);
    record.signal = signal;
    record.code = info ? info->si_code : 0;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    record.seconds = now.tv_sec;
    record.nanoseconds = now.tv_nsec;
    copyText(record.version, sizeof record.version, versionText);
    copyText(record.build, sizeof record.build, buildText);
    copyText(record.exceptionType, sizeof record.exceptionType, uncaughtType);
    readMappings();
    if (context) {
#if defined(__x86_64__)
        const auto& regs = context->uc_mcontext.gregs;
        walk(static_cast<std::uintptr_t>(regs[REG_RIP]), static_cast<std::uintptr_t>(regs[REG_RSP]),
             static_cast<std::uintptr_t>(regs[REG_RBP]));
#elif defined(__aarch64__)
        const auto& mc = context->uc_mcontext;
        walk(static_cast<std::uintptr_t>(mc.pc), static_cast<std::uintptr_t>(mc.sp),
             static_cast<std::uintptr_t>(mc.regs[29]));
#endif
    }
    // Written beside the target and renamed in, so the next start never reads half a record.
    char partial[maxPending + 8];
    std::size_t n = 0;
    while (pendingPath[n]) {
        partial[n] = pendingPath[n];
        ++n;
    }
    const char suffix[] = ".part";
    for (std::size_t k = 0; k < sizeof suffix; ++k) partial[n + k] = suffix[k];
    int fd = ::open(partial, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0 && pendingFolder[0]) {
        // The data folder is made on first use; a crash may come before that.
        ::mkdir(pendingFolder, 0700);
        fd = ::open(partial, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    }
    if (fd < 0) return;
    writeAll(fd, &record, sizeof record);
    ::close(fd);
    ::rename(partial, pendingPath);
}

void onSignal(int signal, siginfo_t* info, void* context) {
    if (entered.fetch_add(1) == 0) {
        if (pendingPath[0]) recordCrash(signal, info, static_cast<const ucontext_t*>(context));
        done = true;
    } else {
        // Another thread is writing the record: let it finish before this one ends the process.
        for (int i = 0; i < 200 && !done; ++i) {
            timespec pause{0, 10'000'000};
            ::nanosleep(&pause, nullptr);
        }
    }
    // Die of the same signal: with the default action back in place, the signal raised here waits
    // until the handler returns and then ends the process.
    struct sigaction fallback {};
    fallback.sa_handler = SIG_DFL;
    sigemptyset(&fallback.sa_mask);
    ::sigaction(signal, &fallback, nullptr);
    ::raise(signal);
}

[[noreturn]] void onTerminate() {
    // Not a signal handler: the type of the exception is read here, and the record is left to the
    // abort's handler, which sees the whole stack.
    if (const std::type_info* type = abi::__cxa_current_exception_type()) uncaughtType = type->name();
    std::abort();
}

} // namespace

bool CrashHandler::install(const std::filesystem::path& pendingFile, const std::string& version, const std::string& build) {
    const std::string path = pendingFile.string();
    if (path.empty() || path.size() >= maxPending) return false;
    copyText(pendingPath, sizeof pendingPath, path.c_str());
    copyText(pendingFolder, sizeof pendingFolder, pendingFile.parent_path().string().c_str());
    copyText(versionText, sizeof versionText, version.c_str());
    copyText(buildText, sizeof buildText, build.c_str());

    stack_t alternate{};
    alternate.ss_sp = altStack;
    alternate.ss_size = sizeof altStack;
    ::sigaltstack(&alternate, nullptr);

    struct sigaction action {};
    action.sa_sigaction = onSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < sizeof fatalSignals / sizeof fatalSignals[0]; ++i)
        ::sigaction(fatalSignals[i], &action, installedFlag ? nullptr : &previous[i]);
    std::set_terminate(onTerminate);
    installedFlag = true;
    return true;
}

bool CrashHandler::installForProgram(const Environment& environment, const std::string& version, const std::string& build) {
    return install(CrashRecords::pendingFile(DataFolder::bridge(environment)), version, build);
}

bool CrashHandler::installed() {
    if (!installedFlag) return false;
    struct sigaction now {};
    ::sigaction(SIGSEGV, nullptr, &now);
    return (now.sa_flags & SA_SIGINFO) && now.sa_sigaction == onSignal;
}

} // namespace orvan
