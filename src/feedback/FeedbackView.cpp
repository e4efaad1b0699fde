#include "feedback/FeedbackView.h"

#include "bridge/LocalRequest.h"
#include "feedback/FeedbackShrink.h"
#include "feedback/FeedbackWords.h"
#include "foundation/Files.h"
#include "platform/Clipboard.h"
#include "platform/FilePicker.h"
#include "platform/Mail.h"

#include <QUuid>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace orvan {

namespace {

std::string readBounded(const std::filesystem::path& file, std::size_t limit) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (error || size > limit) return {};
    std::ifstream in(file, std::ios::binary);
    if (!in) return {};
    std::string bytes(static_cast<std::size_t>(size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

} // namespace

FeedbackView::FeedbackView(LocalApi& api, FeedbackSetup setup)
    : api_(api), setup_(std::move(setup)), sender_(api, setup_.defaults, setup_.appVersion, setup_.environment) {
    readConsent();
    // The Privacy switch may move while the window stands open; the buttons follow it.
    consentWatch_ = Consent::observeChanged([this] { readConsent(); });
}

FeedbackView::~FeedbackView() {
    alive_.cancel();
    sendCancel_.cancel();
    removeTemporary();
}

bool FeedbackView::canMail() const { return setup_.mail && setup_.mail->canMail(); }

bool FeedbackView::canChoose() const { return setup_.picker && setup_.picker->canChoose(); }

std::string FeedbackView::device() const { return Feedback::device(setup_.model); }

std::optional<std::string> FeedbackView::sentDiagnostics() const {
    if (!includeDiagnostics) return std::nullopt;
    return diagnostics;
}

std::string FeedbackView::preview() const {
    return Feedback::preview(kind, device(), Feedback::clean(text), sentDiagnostics(), images);
}

std::string FeedbackView::footer() const { return Feedback::footer(went, allows(), canMail()); }

std::string FeedbackView::status() const {
    switch (phase) {
    case Phase::sent: return FeedbackWords::sent;
    case Phase::copied: return FeedbackWords::copied;
    case Phase::mailed: return FeedbackWords::mailed;
    case Phase::failed: return failure;
    case Phase::writing:
    case Phase::sending: break;
    }
    return {};
}

Json FeedbackView::body() const {
    return Feedback::body(kind, Feedback::clean(text), includeDiagnostics ? diagnostics : std::string(), device(), images);
}

void FeedbackView::readConsent() {
    if (!setup_.defaults) return;
    const Consent consent = Consent::load(*setup_.defaults, setup_.appVersion);
    assign(consentOn, consent.on);
    assign(consentAnswered, consent.answered);
}

void FeedbackView::open() {
    if (finished()) {
        // The last report went; the window opens on a new one.
        removeTemporary();
        assign(kind, FeedbackKind::bug);
        assign(text, "");
        assign(images, std::vector<FeedbackImage>{});
        assign(includeDiagnostics, true);
        assign(phase, Phase::writing);
        assign(went, Feedback::Went::notYet);
        assign(note, "");
    }
    readConsent();
    assign(isOpen, true);
    spawn(readDiagnostics());
}

Task<void> FeedbackView::readDiagnostics() {
    Cancel alive = alive_;
    std::optional<std::string> bridge;
    std::vector<std::optional<std::string>> computers;
    const HttpAnswer answer =
        co_await LocalRequest::send(api_, "/companion/hosts", std::nullopt, LocalRequest::defaultTimeout, setup_.environment);
    if (alive.cancelled()) co_return;
    if (answer.isHttp() && answer.status == 200) {
        if (auto tree = json::parse(answer.body); tree && tree->is_object()) {
            if (auto b = tree->find("bridge"); b != tree->end() && b->is_string()) bridge = b->get<std::string>();
            if (auto hosts = tree->find("hosts"); hosts != tree->end() && hosts->is_array()) {
                for (const auto& host : *hosts) {
                    std::optional<std::string> version;
                    if (host.is_object())
                        if (auto v = host.find("version"); v != host.end() && v->is_string()) version = v->get<std::string>();
                    computers.push_back(version);
                }
            }
        }
    }
    assign(diagnostics, Feedback::diagnostics(setup_.appLine, bridge, setup_.system, setup_.model, computers));
}

void FeedbackView::edited() {
    if (phase == Phase::failed) {
        assign(phase, Phase::writing);
        assign(failure, "");
    }
}

void FeedbackView::setKind(FeedbackKind value) {
    if (finished() || sending) return;
    edited();
    assign(kind, value);
}

void FeedbackView::setText(std::string value) {
    if (finished() || sending) return;
    edited();
    assign(text, std::move(value));
}

void FeedbackView::setIncludeDiagnostics(bool on) {
    if (finished() || sending) return;
    edited();
    assign(includeDiagnostics, on);
}

Task<void> FeedbackView::add(std::vector<std::string> pictures) {
    if (!setup_.images || pictures.empty() || finished() || sending) co_return;
    Cancel alive = alive_;
    edited();
    assign(note, "");
    assign(adding, true);
    auto drawn = co_await FeedbackShrink::offMainThread(*setup_.images, std::move(pictures));
    if (alive.cancelled()) co_return;
    auto list = images;
    int refused = 0;
    for (auto& picture : drawn) {
        if (!picture) {
            ++refused;
            continue;
        }
        if (list.size() >= Feedback::maxImages) continue;
        list.push_back(FeedbackImage{QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString(), std::move(*picture)});
    }
    assign(images, std::move(list));
    if (refused) assign(note, FeedbackWords::notAdded(refused));
    assign(adding, false);
}

Task<void> FeedbackView::paste() {
    std::optional<std::string> picture;
    if (setup_.clipboard) picture = setup_.clipboard->image();
    if (!picture) {
        assign(note, FeedbackWords::noPicture);
        co_return;
    }
    std::vector<std::string> pictures;
    pictures.push_back(std::move(*picture));
    co_await add(std::move(pictures));
}

Task<void> FeedbackView::chooseFile() {
    if (!canChoose() || choosing) co_return;
    Cancel alive = alive_;
    assign(choosing, true);
    FileChoice choice;
    choice.kind = FileChoice::Kind::file;
    choice.message = FeedbackWords::picturesAbout;
    auto chosen = co_await setup_.picker->choose(choice);
    if (alive.cancelled()) co_return;
    assign(choosing, false);
    if (chosen) co_await addFile(*chosen);
}

Task<void> FeedbackView::addFile(std::filesystem::path file) {
    std::string bytes = readBounded(file, maxPictureFile);
    if (bytes.empty()) {
        edited();
        assign(note, FeedbackWords::notAdded(1));
        co_return;
    }
    assign(typedPath, "");
    std::vector<std::string> pictures;
    pictures.push_back(std::move(bytes));
    co_await add(std::move(pictures));
}

void FeedbackView::remove(const std::string& id) {
    if (finished() || sending) return;
    auto list = images;
    std::erase_if(list, [&](const FeedbackImage& image) { return image.id == id; });
    edited();
    assign(images, std::move(list));
}

void FeedbackView::go() {
    if (sending || finished()) return;
    edited();
    if (auto fault = Feedback::problem(text, images)) {
        assign(note, *fault);
        return;
    }
    if (!allows()) return;
    spawn(send());
}

Task<void> FeedbackView::send() {
    if (sending) co_return;
    Cancel alive = alive_;
    sendCancel_ = Cancel();
    Cancel cancel = sendCancel_;
    assign(note, "");
    assign(sending, true);
    assign(phase, Phase::sending);
    const Feedback::Outcome outcome = co_await sender_.send(body());
    if (alive.cancelled() || cancel.cancelled()) co_return;
    assign(sending, false);
    switch (outcome.kind) {
    case Feedback::Outcome::Kind::sent:
        assign(went, Feedback::Went::relay);
        assign(phase, Phase::sent);
        break;
    case Feedback::Outcome::Kind::relayOff:
        assign(failure, FeedbackWords::relayOff);
        assign(phase, Phase::failed);
        break;
    case Feedback::Outcome::Kind::failed:
        assign(failure, outcome.text);
        assign(phase, Phase::failed);
        break;
    }
}

std::vector<std::filesystem::path> FeedbackView::writePictures() {
    removeTemporary();
    std::vector<std::filesystem::path> files;
    if (images.empty()) return files;
    std::filesystem::path root = setup_.temporary;
    if (root.empty()) {
        auto tmp = setup_.environment.find("TMPDIR");
        root = tmp != setup_.environment.end() && !tmp->second.empty() ? std::filesystem::path(tmp->second)
                                                                       : std::filesystem::temp_directory_path();
    }
    // mkdtemp makes the folder 0700, so no one else can look in or swap the files.
    std::string pattern = (root / "orvan-feedback-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) return files;
    temporaryFolder_ = pattern;
    for (std::size_t i = 0; i < images.size(); ++i) {
        const auto file = temporaryFolder_ / ("screenshot-" + std::to_string(i + 1) + ".jpg");
        if (Files::write(file, images[i].data)) files.push_back(file);
    }
    return files;
}

void FeedbackView::removeTemporary() {
    if (temporaryFolder_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(temporaryFolder_, ignored);
    temporaryFolder_.clear();
}

void FeedbackView::fallBack(bool byMail) {
    if (sending || finished()) return;
    edited();
    if (auto fault = Feedback::problem(text, images)) {
        assign(note, *fault);
        return;
    }
    assign(note, "");
    const auto files = writePictures();
    const std::string words = preview();
    if (byMail) {
        MailDraft draft{Feedback::mailAddress, Feedback::mailSubject(kind, text), words, files};
        if (!setup_.mail || !setup_.mail->compose(draft)) {
            assign(note, FeedbackWords::noMail);
            return;
        }
        assign(went, Feedback::Went::mail);
        assign(phase, Phase::mailed);
    } else {
        if (!setup_.clipboard || !setup_.clipboard->putTextAndImages(words, files)) {
            assign(note, FeedbackWords::noClipboard);
            return;
        }
        assign(went, Feedback::Went::clipboard);
        assign(phase, Phase::copied);
    }
}

void FeedbackView::turnSharingOn() {
    if (!setup_.defaults) return;
    Consent::answer(true, *setup_.defaults);
    readConsent();
}

void FeedbackView::close() {
    if (sending) {
        sendCancel_.cancel();
        assign(sending, false);
        assign(phase, Phase::writing);
        assign(note, FeedbackWords::stopped);
    }
    // A mail program may still read the attachments after the window closed; they go with the
    // next report or when the program ends.
    if (went != Feedback::Went::mail) removeTemporary();
    assign(isOpen, false);
}

} // namespace orvan
