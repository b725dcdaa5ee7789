#pragma once

#include <QDialog>
#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QQueue>
#include <QStringList>
#include <QTimer>

#include <functional>

// Answers the modal dialogs that the code under test runs, in the order they come.
// Message boxes are recorded and answered with a scripted button; other dialogs go to
// a scripted handler that fills their widgets and accepts or rejects them. A dialog
// met without a script is recorded as unexpected and cancelled, so it cannot hang the
// test.
class koDialogDriver : public QObject
{
    Q_OBJECT
public:
    struct MessageBox
    {
        QString title;
        QString text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons;
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
        QString checkBoxText;
        // As the box showed it, before any scripted tick.
        bool checkBoxChecked = false;
        bool parentless = false;
        // A scrollable box, its text in a scroll area.
        bool scrollable = false;

        // "Title|Text (kind)": "question" for OK and Cancel with Cancel the default, "error"
        // for a critical box with OK alone, "warning" for a warning with OK alone.
        QString summary() const;
    };

    explicit koDialogDriver(QObject* parent = nullptr);
    ~koDialogDriver() override;

    // The next modal dialog is a message box; press this button, ticking its check
    // box first if asked.
    void answerMessageBox(QMessageBox::StandardButton button, bool tickCheckBox = false);
    // The next modal dialog is no message box; the handler deals with it.
    void handleDialog(std::function<void(QDialog*)> handler);

    const QList<MessageBox>& messageBoxes() const { return m_messageBoxes; }
    QStringList summaries() const;
    // Dialogs that came without a script or were left open by their handler, and
    // scripted ones that never came: empty when the code asked just what was expected.
    QStringList mismatches() const;

private:
    struct Step
    {
        bool forMessageBox = true;
        QMessageBox::StandardButton button = QMessageBox::NoButton;
        bool tickCheckBox = false;
        std::function<void(QDialog*)> handler;
    };

    void poll();
    void handle(QWidget* modal);
    void answer(QMessageBox* box, const Step* step);
    void runHandler(QDialog* dialog, const Step& step);
    static QString describe(const QWidget* dialog);

    QTimer m_timer;
    QQueue<Step> m_steps;
    QList<QPointer<QWidget>> m_seen;
    QList<MessageBox> m_messageBoxes;
    QStringList m_unexpected;
};
