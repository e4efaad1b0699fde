#pragma once
// Qt's file dialog, window-modal to nothing so the main window keeps answering while it is up.

#include "platform/FilePicker.h"

namespace orvan {

class QtFilePicker final : public FilePicker {
public:
    bool canChoose() const override { return true; }
    Task<std::optional<std::filesystem::path>> choose(FileChoice choice) override;
};

} // namespace orvan
