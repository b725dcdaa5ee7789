#include <kovis/koFileDialog.h>

#include <QDir>

namespace {

koFileDialog::Handler& installedHandler()
{
    static koFileDialog::Handler handler;
    return handler;
}

// The handler's answer if one is installed, else the dialog's.
template<class Dialog>
QStringList ask(const koFileDialog::Call& call, Dialog dialog)
{
    const koFileDialog::Handler& handler = installedHandler();
    return handler ? handler(call) : dialog();
}

using FileDialog = QString (*)(QWidget*, const QString&, const QString&, const QString&, QString*,
                               QFileDialog::Options);

QString askForFile(koFileDialog::Function function, FileDialog dialog, QWidget* parent, const QString& caption,
                   const QString& dir, const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    return ask({function, parent, caption, dir, filter, options}, [&] {
               return QStringList{dialog(parent, caption, dir, filter, selectedFilter, options)};
           }).value(0);
}

} // namespace

QString koFileDialog::getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                                      const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    return askForFile(Function::OpenFileName, &QFileDialog::getOpenFileName, parent, caption, dir, filter,
                      selectedFilter, options);
}

QStringList koFileDialog::getOpenFileNames(QWidget* parent, const QString& caption, const QString& dir,
                                           const QString& filter, QString* selectedFilter,
                                           QFileDialog::Options options)
{
    return ask({Function::OpenFileNames, parent, caption, dir, filter, options}, [&] {
        return QFileDialog::getOpenFileNames(parent, caption, dir, filter, selectedFilter, options);
    });
}

QString koFileDialog::getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                      const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    return askForFile(Function::SaveFileName, &QFileDialog::getSaveFileName, parent, caption, dir, filter,
                      selectedFilter, options);
}

QString koFileDialog::getExistingDirectory(QWidget* parent, const QString& caption, const QString& dir,
                                           QFileDialog::Options options)
{
    return ask({Function::ExistingDirectory, parent, caption, dir, QString(), options}, [&] {
               return QStringList{QFileDialog::getExistingDirectory(parent, caption, dir, options)};
           }).value(0);
}

QString koFileDialog::getExistingDirectoryForField(QWidget* parent, const QString& caption, const QString& typed)
{
    const QString start = !typed.isEmpty() && QDir(typed).exists() ? typed : QString();
    return getExistingDirectory(parent, caption, start, QFileDialog::ShowDirsOnly);
}

koFileDialog::Handler koFileDialog::setHandler(Handler handler)
{
    return std::exchange(installedHandler(), std::move(handler));
}
