#pragma once
// The clipboard: what the owner copies from the program.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class Clipboard {
public:
    virtual ~Clipboard() = default;
    // Replaces whatever the clipboard held. Concealed text is marked for clipboard managers to
    // keep out of their history. False when there is no clipboard to put it on.
    virtual bool putText(const std::string& text, bool concealed) = 0;
    // Text with pictures (JPEG files) beside it, for a message the owner writes by hand. False when
    // nothing could be put there; a clipboard without room for pictures refuses them.
    virtual bool putTextAndImages(const std::string&, const std::vector<std::filesystem::path>&) { return false; }
    // The picture the clipboard holds, as encoded bytes; absent when it holds none.
    virtual std::optional<std::string> image() const { return std::nullopt; }
};

} // namespace orvan
