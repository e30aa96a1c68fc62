#include "ConfirmationDialogs.h"

#include "RCUModel.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace orvan {

ConfirmationDialogs::ConfirmationDialogs(RCUModel& model, DialogTexts texts, QWidget* parent)
    : QObject(parent)
    , m_model(model)
    , m_texts(std::move(texts))
    , m_parent(parent)
{
    connect(&m_model, &RCUModel::pendingResetChanged, this, &ConfirmationDialogs::syncReset);
    connect(&m_model, &RCUModel::pendingPhantomChanged, this, &ConfirmationDialogs::syncPhantom);
    connect(&m_model, &RCUModel::savingPresetChanged, this, &ConfirmationDialogs::syncSave);
    connect(&m_model, &RCUModel::pendingRecallChanged, this, &ConfirmationDialogs::syncRecall);
    connect(&m_model, &RCUModel::presetNameDraftChanged, this, [this] {
        if (m_saveName && m_saveName->text() != m_model.presetNameDraft())
            m_saveName->setText(m_model.presetNameDraft());
    });
    syncReset();
    syncPhantom();
    syncSave();
    syncRecall();
}

namespace {

constexpr int kMaximumMessageWidth = 640;

/// Widens a message so that each of its sentences fits on one line, up to a limit: a narrow box
/// would break a sentence anywhere, even between "18" and "dB".
void fitSentences(QLabel* message)
{
    if (!message)
        return;
    const QFontMetrics metrics(message->font());
    int widest = 0;
    for (const QString& sentence : message->text().split(QStringLiteral(". ")))
        widest = std::max(widest, metrics.horizontalAdvance(sentence + QLatin1Char('.')));
    message->setMinimumWidth(std::min(widest + metrics.averageCharWidth(), kMaximumMessageWidth));
}

} // namespace

QString ConfirmationDialogs::channelList(const QList<int>& channels)
{
    QStringList numbers;
    for (int index : channels)
        numbers << QString::number(index + 1);
    return numbers.join(QStringLiteral(", "));
}

QMessageBox* ConfirmationDialogs::openConfirmation(const QString& title, const QString& message,
                                                   const QString& confirmText, bool destructive,
                                                   std::function<void(bool)> onFinished)
{
    auto* box = new QMessageBox(m_parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(destructive ? QMessageBox::Warning : QMessageBox::Question);
    box->setWindowTitle(title);
    box->setText(title);
    box->setInformativeText(message);
    fitSentences(box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")));
    QPushButton* confirm = box->addButton(confirmText, destructive ? QMessageBox::DestructiveRole : QMessageBox::AcceptRole);
    QPushButton* cancel = box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(cancel); // Return must never switch phantom power on by accident
    box->setEscapeButton(cancel);
    connect(box, &QMessageBox::finished, this, [box, confirm, onFinished = std::move(onFinished)] {
        onFinished(box->clickedButton() == confirm);
    });
    box->open();
    return box;
}

void ConfirmationDialogs::syncReset()
{
    if (m_model.pendingReset() && !m_reset) {
        m_reset = openConfirmation(m_texts.resetTitle, m_texts.resetMessage, QStringLiteral("Reset all"), true,
                                   [this](bool confirmed) {
                                       m_reset = nullptr;
                                       if (confirmed)
                                           m_model.resetAll();
                                       m_model.clearPendingReset();
                                   });
    } else if (!m_model.pendingReset() && m_reset) {
        std::exchange(m_reset, nullptr)->close();
    }
}

void ConfirmationDialogs::syncPhantom()
{
    const auto pending = m_model.pendingPhantom();
    const QString message = m_texts.phantomMessagePrefix + channelList(pending.value_or(QList<int>{})) + QStringLiteral(".");
    if (pending && !m_phantom) {
        m_phantom = openConfirmation(QString::fromLatin1(kPhantomTitle), message, QStringLiteral("Turn on +48V"), false,
                                     [this](bool confirmed) {
                                         m_phantom = nullptr;
                                         if (confirmed)
                                             m_model.confirmPhantom();
                                         m_model.clearPendingPhantom();
                                     });
    } else if (pending && m_phantom) {
        m_phantom->setInformativeText(message);
    } else if (!pending && m_phantom) {
        std::exchange(m_phantom, nullptr)->close();
    }
}

void ConfirmationDialogs::syncRecall()
{
    const auto pending = m_model.pendingRecall();
    const QString title = m_texts.recallTitlePrefix + (pending ? pending->name : QString()) + QStringLiteral("?");
    if (pending && !m_recall) {
        m_recall = openConfirmation(title, QString::fromLatin1(kRecallMessage), QStringLiteral("Recall and turn on +48V"),
                                    false, [this](bool confirmed) {
                                        m_recall = nullptr;
                                        // The preset may have been withdrawn while the dialog was open.
                                        if (confirmed) {
                                            if (const auto preset = m_model.pendingRecall())
                                                m_model.recall(*preset);
                                        }
                                        m_model.clearPendingRecall();
                                    });
    } else if (pending && m_recall) {
        m_recall->setWindowTitle(title);
        m_recall->setText(title);
    } else if (!pending && m_recall) {
        std::exchange(m_recall, nullptr)->close();
    }
}

void ConfirmationDialogs::syncSave()
{
    if (m_model.savingPreset() && !m_save) {
        auto* dialog = new QDialog(m_parent);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setWindowTitle(m_texts.saveTitle);
        auto* layout = new QVBoxLayout(dialog);
        auto* title = new QLabel(QStringLiteral("<b>%1</b>").arg(m_texts.saveTitle.toHtmlEscaped()), dialog);
        title->setObjectName(QStringLiteral("title"));
        auto* message = new QLabel(m_texts.saveMessage, dialog);
        message->setObjectName(QStringLiteral("message"));
        message->setWordWrap(true);
        fitSentences(message);
        auto* name = new QLineEdit(m_model.presetNameDraft(), dialog);
        name->setPlaceholderText(QStringLiteral("Name"));
        name->selectAll();
        auto* buttons = new QDialogButtonBox(dialog);
        QPushButton* save = buttons->addButton(QStringLiteral("Save"), QDialogButtonBox::AcceptRole);
        buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
        save->setDefault(true);
        layout->addWidget(title);
        layout->addWidget(message);
        layout->addWidget(name);
        layout->addWidget(buttons);

        connect(name, &QLineEdit::textEdited, &m_model, &RCUModel::setPresetNameDraft);
        connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
        connect(dialog, &QDialog::finished, this, [this](int result) {
            m_save = nullptr;
            m_saveName = nullptr;
            if (result == QDialog::Accepted)
                m_model.commitSave();
            m_model.setSavingPreset(false);
        });
        m_save = dialog;
        m_saveName = name;
        dialog->open();
    } else if (!m_model.savingPreset() && m_save) {
        m_saveName = nullptr;
        std::exchange(m_save, nullptr)->close();
    }
}

} // namespace orvan
