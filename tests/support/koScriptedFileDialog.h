#pragma once

#include <kovis/koFileDialog.h>

#include <QList>
#include <QQueue>
#include <QStringList>

// Stands in for the file dialogs while it lives: each call is recorded and answered
// with the next queued answer (a call without one is answered as Cancel). Scripts
// nest; the destructor brings back what was installed before.
class koScriptedFileDialog
{
public:
    koScriptedFileDialog();
    ~koScriptedFileDialog();

    koScriptedFileDialog(const koScriptedFileDialog&) = delete;
    koScriptedFileDialog& operator=(const koScriptedFileDialog&) = delete;

    // An empty path answers Cancel.
    void answer(const QString& path);
    void answer(const QStringList& paths);

    const QList<koFileDialog::Call>& calls() const { return m_calls; }
    // "kind: caption|start folder|filter" for each call, kind being open, open several, save or folder.
    QStringList summaries() const;

private:
    QQueue<QStringList> m_answers;
    QList<koFileDialog::Call> m_calls;
    koFileDialog::Handler m_previous;
};
