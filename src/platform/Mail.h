#pragma once
// Handing a message to the desktop's mail program, for the owner to address and send.

#include <filesystem>
#include <string>
#include <vector>

namespace orvan {

struct MailDraft {
    std::string to;
    std::string subject;
    std::string body;
    std::vector<std::filesystem::path> attachments;
};

class Mail {
public:
    virtual ~Mail() = default;
    virtual bool canMail() const = 0;
    // Opens a new message in the mail program; false when none could be opened.
    virtual bool compose(const MailDraft& draft) = 0;
};

} // namespace orvan
