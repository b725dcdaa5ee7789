#pragma once

#include "koBaseService.h"

#include <QIcon>
#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

// Keeps the modules that plug-ins register; the host application shows them.
class KOVIS_EXPORT koMainWindowService : public koBaseService
{
    Q_OBJECT
public:
    struct Module
    {
        QString title;
        QString group;
        QPointer<QWidget> window;
        QString toolClip;
        QIcon icon;
        QString caption;
        bool floating = false;
    };

    using koBaseService::koBaseService;

    virtual void registerModule(const QString& title, const QString& group, QWidget* window,
                                const QString& toolClip, const QIcon& icon, const QString& caption,
                                bool floating);
    const QList<Module>& modules() const { return m_modules; }

signals:
    void moduleRegistered(int index);

private:
    QList<Module> m_modules;
};
