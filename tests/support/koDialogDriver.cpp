#include "koDialogDriver.h"

#include <kovis/QKOScrollableMessageBox.h>

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QScrollArea>

koDialogDriver::koDialogDriver(QObject* parent)
    : QObject(parent)
{
    m_timer.setInterval(5);
    connect(&m_timer, &QTimer::timeout, this, &koDialogDriver::poll);
    m_timer.start();
}

koDialogDriver::~koDialogDriver() = default;

void koDialogDriver::answerMessageBox(QMessageBox::StandardButton button, bool tickCheckBox)
{
    m_steps.enqueue({true, button, tickCheckBox, {}});
}

void koDialogDriver::handleDialog(std::function<void(QDialog*)> handler)
{
    m_steps.enqueue({false, QMessageBox::NoButton, false, std::move(handler)});
}

QString koDialogDriver::MessageBox::summary() const
{
    QString kind = QStringLiteral("icon %1, buttons %2, default %3").arg(icon).arg(int(buttons)).arg(defaultButton);
    if (buttons == (QMessageBox::Ok | QMessageBox::Cancel) && defaultButton == QMessageBox::Cancel
        && icon == QMessageBox::Warning)
        kind = QStringLiteral("question");
    else if (buttons == QMessageBox::Ok && icon == QMessageBox::Critical)
        kind = QStringLiteral("error");
    else if (buttons == QMessageBox::Ok && icon == QMessageBox::Warning)
        kind = QStringLiteral("warning");
    return QStringLiteral("%1|%2 (%3)").arg(title, text, kind);
}

QStringList koDialogDriver::summaries() const
{
    QStringList shown;
    for (const MessageBox& box : m_messageBoxes)
        shown << box.summary();
    return shown;
}

QStringList koDialogDriver::mismatches() const
{
    QStringList found = m_unexpected;
    if (!m_steps.isEmpty())
        found << QStringLiteral("%1 scripted dialog(s) never shown").arg(m_steps.size());
    return found;
}

void koDialogDriver::poll()
{
    m_seen.removeAll(nullptr);
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || m_seen.contains(modal))
        return;
    m_seen.append(modal);
    // Handled from the event queue, not from inside the timer: a handler may open a
    // nested modal dialog, and the timer must keep firing while that one runs.
    QPointer<QWidget> target(modal);
    QMetaObject::invokeMethod(
        this,
        [this, target] {
            if (target)
                handle(target);
        },
        Qt::QueuedConnection);
}

void koDialogDriver::handle(QWidget* modal)
{
    auto* box = qobject_cast<QMessageBox*>(modal);
    auto* dialog = qobject_cast<QDialog*>(modal);
    const bool scripted = !m_steps.isEmpty() && m_steps.head().forMessageBox == (box != nullptr);
    const Step step = scripted ? m_steps.dequeue() : Step();
    if (box)
        answer(box, scripted ? &step : nullptr);
    else if (dialog && scripted)
        runHandler(dialog, step);
    else {
        m_unexpected << describe(modal);
        if (dialog)
            dialog->reject();
        else
            modal->close();
    }
}

void koDialogDriver::answer(QMessageBox* box, const Step* step)
{
    MessageBox record;
    record.title = box->windowTitle();
    record.text = box->text();
    record.icon = box->icon();
    record.parentless = box->parentWidget() == nullptr;
    record.scrollable = qobject_cast<QKOScrollableMessageBox*>(box) && box->findChild<QScrollArea*>();
    record.buttons = box->standardButtons();
    record.defaultButton = box->defaultButton() ? box->standardButton(box->defaultButton()) : QMessageBox::NoButton;
    if (QCheckBox* checkBox = box->checkBox()) {
        record.checkBoxText = checkBox->text();
        record.checkBoxChecked = checkBox->isChecked();
        if (step && step->tickCheckBox)
            checkBox->setChecked(true);
    }
    QAbstractButton* button = step ? box->button(step->button) : nullptr;
    if (!button) {
        m_unexpected << describe(box);
        button = box->button(QMessageBox::Cancel) ? box->button(QMessageBox::Cancel) : box->escapeButton();
    }
    m_messageBoxes.append(record);
    if (button)
        button->click();
    else
        box->reject();
}

void koDialogDriver::runHandler(QDialog* dialog, const Step& step)
{
    const QPointer<QDialog> guard(dialog);
    step.handler(dialog);
    if (guard && guard->isVisible()) {
        m_unexpected << describe(guard) + QStringLiteral(" (left open)");
        guard->reject();
    }
}

QString koDialogDriver::describe(const QWidget* dialog)
{
    const auto* box = qobject_cast<const QMessageBox*>(dialog);
    return QStringLiteral("%1 \"%2\"%3")
        .arg(QString::fromLatin1(dialog->metaObject()->className()), dialog->windowTitle(),
             box ? QStringLiteral(": ") + box->text() : QString());
}
