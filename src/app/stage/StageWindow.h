#pragma once

#include <QGraphicsView>
#include <functional>

namespace orvan {

/// The one window: undecorated, fixed size, black, showing the stage at 0.8. The up and down
/// arrow keys step the gain of whatever `onArrowStep` routes them to; Ctrl+Z undoes, Ctrl+Shift+Z
/// and Ctrl+Y redo.
class StageWindow final : public QGraphicsView {
public:
    explicit StageWindow(QGraphicsScene* stage, QWidget* parent = nullptr);

    void setArrowStepHandler(std::function<void(int steps)> handler) { m_onArrowStep = std::move(handler); }
    void setHistoryHandlers(std::function<void()> undo, std::function<void()> redo)
    {
        m_onUndo = std::move(undo);
        m_onRedo = std::move(redo);
    }

    /// Places the window in the middle of its screen, unless the window system places windows
    /// itself (Wayland), where the window is left wherever the compositor puts it.
    void centreOnScreen();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::function<void(int)> m_onArrowStep;
    std::function<void()> m_onUndo, m_onRedo;
};

} // namespace orvan
