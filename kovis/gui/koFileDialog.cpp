#include <kovis/koFileDialog.h>

namespace {

koFileDialog::Handler& installedHandler()
{
    static koFileDialog::Handler handler;
    return handler;
}

} // namespace

QString koFileDialog::getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                                      const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    if (const Handler& handler = installedHandler())
        return handler({Function::OpenFileName, parent, caption, dir, filter, options}).value(0);
    return QFileDialog::getOpenFileName(parent, caption, dir, filter, selectedFilter, options);
}

QStringList koFileDialog::getOpenFileNames(QWidget* parent, const QString& caption, const QString& dir,
                                           const QString& filter, QString* selectedFilter,
                                           QFileDialog::Options options)
{
    if (const Handler& handler = installedHandler())
        return handler({Function::OpenFileNames, parent, caption, dir, filter, options});
    return QFileDialog::getOpenFileNames(parent, caption, dir, filter, selectedFilter, options);
}

QString koFileDialog::getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                      const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    if (const Handler& handler = installedHandler())
        return handler({Function::SaveFileName, parent, caption, dir, filter, options}).value(0);
    return QFileDialog::getSaveFileName(parent, caption, dir, filter, selectedFilter, options);
}

QString koFileDialog::getExistingDirectory(QWidget* parent, const QString& caption, const QString& dir,
                                           QFileDialog::Options options)
{
    if (const Handler& handler = installedHandler())
        return handler({Function::ExistingDirectory, parent, caption, dir, QString(), options}).value(0);
    return QFileDialog::getExistingDirectory(parent, caption, dir, options);
}

koFileDialog::Handler koFileDialog::setHandler(Handler handler)
{
    return std::exchange(installedHandler(), std::move(handler));
}
