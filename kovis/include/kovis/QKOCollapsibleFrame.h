#pragma once

#include "koGlobal.h"

#include <QFrame>

class QToolButton;
class QVBoxLayout;

// A frame whose caption folds its pages away. Widgets created as direct children of
// the frame (as a Qt Designer form does for a promoted container) become its pages.
class KOVIS_EXPORT QKOCollapsibleFrame : public QFrame
{
    Q_OBJECT
    Q_PROPERTY(QString caption READ getCaption WRITE setCaption)
    Q_PROPERTY(bool collapsed READ isCollapsed WRITE setCollapsed)
public:
    explicit QKOCollapsibleFrame(QWidget* parent = nullptr);

    // The frame takes ownership of the page.
    void addPage(QWidget* page);
    QList<QWidget*> pages() const;
    void setCaption(const QString& caption);
    QString getCaption() const;
    void setCollapsed(bool collapsed);
    bool isCollapsed() const;

signals:
    void collapsedChanged(bool collapsed);

protected:
    void childEvent(QChildEvent* event) override;

private:
    QVBoxLayout* m_layout;
    QToolButton* m_header = nullptr;
    QList<QWidget*> m_pages;
    bool m_collapsed = false;
};
