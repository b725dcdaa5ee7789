#include "koReferenceQuestion.h"

#include <QMessageBox>

ReferenceDialogCode koReferenceQuestion::ask(QWidget* parent, const QString& title, const QString& text)
{
    const auto answer =
        QMessageBox::warning(parent, title, text, QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel);
    return answer == QMessageBox::Cancel ? DialogCanceled : DialogAccepted;
}
