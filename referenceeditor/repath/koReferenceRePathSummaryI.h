#pragma once

#include "ui_koReferenceRePathSummary.h"

#include <QDialog>

class QStringListModel;

// Lists the files a repath did not find and asks whether to repath all the same.
class koReferenceRePathSummaryI : public QDialog, public Ui::koReferenceRePathSummary
{
    Q_OBJECT
public:
    explicit koReferenceRePathSummaryI(QWidget* parent);

    void setList(const QStringList& paths);
    void setMessage1(const QString& text);
    void setMessage2(const QString& text);

private:
    QStringListModel* m_model = nullptr;
};
