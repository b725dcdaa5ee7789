#pragma once

#include "ui_koReferenceRePathDialog.h"

#include <QDialog>

// Asks where moved reference files are now and which of them to look for.
class koReferenceRePathDialogI : public QDialog, public Ui::koReferenceRePathDialog
{
    Q_OBJECT
public:
    explicit koReferenceRePathDialogI(QWidget* parent);

    QString newPath() const;
    bool missingFilesOnly() const;
    bool searchSubdirectories() const;

public slots:
    void selectNewPath();
};
