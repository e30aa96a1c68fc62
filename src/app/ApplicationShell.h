#pragma once

#include <memory>

namespace orvan {

class ConfirmationDialogs;
class OrvanRCUApp;
class StageScene;
class StageWindow;

/// The running application's visible parts: the stage, its window, and the two units' dialogs.
class ApplicationShell {
public:
    explicit ApplicationShell(OrvanRCUApp& app);
    ~ApplicationShell();

    void show();

    StageScene& stage() const { return *m_stage; }
    StageWindow& window() const { return *m_window; }
    ConfirmationDialogs& orvanDialogs() const { return *m_orvanDialogs; }
    ConfirmationDialogs& dunraDialogs() const { return *m_dunraDialogs; }

private:
    std::unique_ptr<StageScene> m_stage;
    std::unique_ptr<StageWindow> m_window;
    ConfirmationDialogs* m_orvanDialogs;
    ConfirmationDialogs* m_dunraDialogs;
};

} // namespace orvan
