#pragma once
// Mail through the desktop's own choice of mail program, by way of xdg-email.

#include "platform/Mail.h"

namespace orvan {

class XdgMail final : public Mail {
public:
    bool canMail() const override;
    bool compose(const MailDraft& draft) override;
};

} // namespace orvan
