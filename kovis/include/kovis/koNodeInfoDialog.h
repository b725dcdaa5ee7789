#pragma once

#include "koGlobal.h"

#include <QDialog>

class QGridLayout;

// A read-only list of labelled values grouped under section titles. Its labels carry
// the object names "infoSection", "infoLabel" and "infoValue", in the order added.
class KOVIS_EXPORT koNodeInfoDialog : public QDialog
{
    Q_OBJECT
public:
    explicit koNodeInfoDialog(QWidget* parent = nullptr);

    void addSection(const QString& title);
    void addInfo(const QString& label, const QString& value);

private:
    QGridLayout* m_grid;
    // An empty grid already reports one row.
    int m_rows = 0;
};
