#include "koScriptedFileDialog.h"

koScriptedFileDialog::koScriptedFileDialog()
    : m_previous(koFileDialog::setHandler([this](const koFileDialog::Call& call) {
        m_calls.append(call);
        return m_answers.isEmpty() ? QStringList() : m_answers.dequeue();
    }))
{
}

koScriptedFileDialog::~koScriptedFileDialog()
{
    koFileDialog::setHandler(m_previous);
}

void koScriptedFileDialog::answer(const QString& path)
{
    answer(path.isEmpty() ? QStringList() : QStringList{path});
}

void koScriptedFileDialog::answer(const QStringList& paths)
{
    m_answers.enqueue(paths);
}

QStringList koScriptedFileDialog::summaries() const
{
    static const QStringList kinds{QStringLiteral("open"), QStringLiteral("open several"), QStringLiteral("save"),
                                   QStringLiteral("folder")};
    QStringList shown;
    for (const koFileDialog::Call& call : m_calls)
        shown << QStringLiteral("%1: %2|%3|%4").arg(kinds.at(int(call.function)), call.caption, call.dir, call.filter);
    return shown;
}
