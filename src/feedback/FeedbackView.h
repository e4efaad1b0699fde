#pragma once
// The feedback window's state and what its controls do. A draft stays as it is through every
// failure, so the owner can try again or send it by hand; nothing is retried on its own.

#include "feedback/Feedback.h"
#include "feedback/FeedbackSender.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "foundation/UserDefaults.h"
#include "diagnostics/Consent.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class Clipboard;
class FilePicker;
class Images;
class LocalApi;
class Mail;

struct FeedbackSetup {
    Environment environment;
    std::shared_ptr<UserDefaults> defaults;
    // The version the consent's preset reads.
    std::string appVersion;
    // The diagnostics' first line: the companion's name, version and build.
    std::string appLine;
    // The system's name and version, and the computer's model as its firmware names it.
    std::string system;
    std::string model;
    const Images* images = nullptr;
    Clipboard* clipboard = nullptr;
    Mail* mail = nullptr;
    FilePicker* picker = nullptr;
    // Where the pictures for Mail or the clipboard are written; the system's temporary folder when empty.
    std::filesystem::path temporary;
};

class FeedbackView final : public Observable {
public:
    enum class Phase { writing, sending, sent, copied, mailed, failed };

    // A picture file larger than this is not read.
    static constexpr std::size_t maxPictureFile = 64 * 1024 * 1024;

    FeedbackView(LocalApi& api, FeedbackSetup setup);
    ~FeedbackView() override;

    // Published fields.
    bool isOpen = false;
    bool consentOn = false;
    int consentAnswered = 0;
    FeedbackKind kind = FeedbackKind::bug;
    std::string text;
    std::vector<FeedbackImage> images;
    bool includeDiagnostics = true;
    std::string diagnostics;
    Phase phase = Phase::writing;
    std::string failure; // the sentence of `failed`
    std::string note;
    bool sending = false;
    bool choosing = false;
    // Pictures are being drawn again.
    bool adding = false;
    Feedback::Went went = Feedback::Went::notYet;
    // The text view's stand-in for a file chooser.
    std::string typedPath;

    bool finished() const { return phase == Phase::sent || phase == Phase::copied || phase == Phase::mailed; }
    bool allows() const { return consentOn && consentAnswered >= 1; }
    bool canMail() const;
    bool canChoose() const;
    std::string device() const;
    std::optional<std::string> sentDiagnostics() const;
    std::string preview() const;
    std::string footer() const;
    // The words under the buttons for the phase; empty while writing.
    std::string status() const;
    Json body() const;

    // Shows the window; a finished report makes room for a new one. Reads the diagnostics anew.
    void open();
    Task<void> readDiagnostics();
    void setKind(FeedbackKind value);
    void setText(std::string value);
    void setIncludeDiagnostics(bool on);
    // Draws each picture again off the main thread and adds those that fit, up to the limit.
    Task<void> add(std::vector<std::string> pictures);
    Task<void> paste();
    Task<void> chooseFile();
    Task<void> addFile(std::filesystem::path file);
    void remove(const std::string& id);
    // Send: through the relay when the owner allows it.
    void go();
    Task<void> send();
    // By hand instead: Mail, or the clipboard.
    void fallBack(bool byMail);
    void turnSharingOn();
    void close();
    // The front end brings the display's clipboard and chooser after the model is made.
    void setClipboard(Clipboard* clipboard) { setup_.clipboard = clipboard; }
    void setPicker(FilePicker* picker) { setup_.picker = picker; }

private:
    void edited();
    void readConsent();
    std::vector<std::filesystem::path> writePictures();
    void removeTemporary();

    LocalApi& api_;
    FeedbackSetup setup_;
    FeedbackSender sender_;
    Cancel alive_;
    Cancel sendCancel_;
    std::filesystem::path temporaryFolder_;
    Consent::Observation consentWatch_;
};

} // namespace orvan
