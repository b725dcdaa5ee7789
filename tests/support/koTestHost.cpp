#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koUndoStack.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtTest>

namespace {

QString settingsFile()
{
    static QTemporaryDir settingsDir;
    return settingsDir.filePath(QStringLiteral("kovis.ini"));
}

} // namespace

koTestHost::koTestHost()
{
    if (!koHost::isInitialized())
        koHost::initialize(settingsFile());
    koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>()->newProject();
}

koTestHost::~koTestHost()
{
    koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>()->newProject();
}

QString koTestHost::path(const QString& relative) const
{
    return m_dir.filePath(relative);
}

QString koTestHost::writeFile(const QString& relative, const QByteArray& content) const
{
    const QString target = path(relative);
    QDir().mkpath(QFileInfo(target).absolutePath());
    QFile file(target);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write test file %s", qPrintable(target));
    return target;
}

void koTestHost::setModified(const QString& path, const QDateTime& time)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || !file.setFileTime(time, QFileDevice::FileModificationTime))
        qFatal("cannot set the time of %s", qPrintable(path));
}
