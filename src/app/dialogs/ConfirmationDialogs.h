#pragma once

#include "DialogTexts.h"

#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QObject>
#include <QPointer>

namespace orvan {

class RCUModel;

/// Shows a unit's four dialogs while its model asks for them: reset, +48V, save preset, recall.
/// Dialogs never block the event loop. Closing one in any way clears the model field that opened
/// it, after the chosen button's action has run; a field cleared by the model closes its dialog.
class ConfirmationDialogs final : public QObject {
    Q_OBJECT

public:
    ConfirmationDialogs(RCUModel& model, DialogTexts texts, QWidget* parent);

    QMessageBox* resetDialog() const { return m_reset; }
    QMessageBox* phantomDialog() const { return m_phantom; }
    QMessageBox* recallDialog() const { return m_recall; }
    QDialog* saveDialog() const { return m_save; }
    QLineEdit* saveNameField() const { return m_saveName; }

    /// "channel(s) 3, 6." for pending indices 2 and 5.
    static QString channelList(const QList<int>& channels);

private:
    void syncReset();
    void syncPhantom();
    void syncSave();
    void syncRecall();
    QMessageBox* openConfirmation(const QString& title, const QString& message, const QString& confirmText,
                                  bool destructive, std::function<void(bool confirmed)> onFinished);

    RCUModel& m_model;
    DialogTexts m_texts;
    QWidget* m_parent;
    QPointer<QMessageBox> m_reset;
    QPointer<QMessageBox> m_phantom;
    QPointer<QMessageBox> m_recall;
    QPointer<QDialog> m_save;
    QPointer<QLineEdit> m_saveName;
};

} // namespace orvan
