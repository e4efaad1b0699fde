#pragma once
// The desktop's own handlers: a web page in the browser, a file or folder in the program the owner
// chose for it, and bringing this program to the front.

#include <filesystem>
#include <string>

namespace orvan {

class Desktop {
public:
    virtual ~Desktop() = default;
    // False when nothing could be started to open it.
    virtual bool openUrl(const std::string& url) = 0;
    virtual bool openFile(const std::filesystem::path& file) = 0;
    // Opening a folder is also how a desktop that guards folders gets to ask the owner about it.
    virtual bool openFolder(const std::filesystem::path& folder) = 0;
    virtual void activate() = 0;
};

} // namespace orvan
