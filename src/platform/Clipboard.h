#pragma once
// The clipboard: what the owner copies from the program.

#include <string>

namespace orvan {

class Clipboard {
public:
    virtual ~Clipboard() = default;
    // Replaces whatever the clipboard held. Concealed text is marked for clipboard managers to
    // keep out of their history. False when there is no clipboard to put it on.
    virtual bool putText(const std::string& text, bool concealed) = 0;
};

} // namespace orvan
