#include "koBenchScene.h"

#include "koTestHost.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

int koBenchScene::partsFrom(const QStringList& arguments)
{
    const int at = arguments.indexOf(QStringLiteral("--parts"));
    return at > 0 ? arguments.value(at + 1).toInt() : 100;
}

QString koBenchScene::write(const koTestHost& host, int parts)
{
    QDir().mkpath(host.path(QStringLiteral("parts")));
    QJsonArray top;
    for (int a = 0; a < assemblies; ++a) {
        QJsonArray middle;
        for (int b = 0; b < subAssemblies; ++b) {
            QJsonArray leaves;
            for (int c = 0; c < parts; ++c) {
                const QString file = QStringLiteral("parts/part_%1_%2_%3").arg(a).arg(b).arg(c);
                QFile(host.path(file + QStringLiteral(".kpr"))).open(QIODevice::WriteOnly);
                QFile(host.path(file + QStringLiteral(".obj"))).open(QIODevice::WriteOnly);
                leaves.append(koTestHost::reference(QStringLiteral("Part %1.%2.%3").arg(a).arg(b).arg(c),
                                                    file + QStringLiteral(".kpr"), file + QStringLiteral(".obj"),
                                                    {{"loaded", false}}));
            }
            QJsonObject sub = koTestHost::reference(QStringLiteral("Sub %1.%2").arg(a).arg(b), QString(), QString());
            sub.insert(QStringLiteral("children"), leaves);
            middle.append(sub);
        }
        QJsonObject assembly = koTestHost::reference(QStringLiteral("Assembly %1").arg(a), QString(), QString());
        assembly.insert(QStringLiteral("children"), middle);
        top.append(assembly);
    }
    return host.writeProject(QStringLiteral("plant.kpr"), top);
}
