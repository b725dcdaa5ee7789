#include "koRepathPlan.h"

#include "koNodeInformation.h"
#include "koReferenceJson.h"
#include "koReferenceReport.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>

#include <koRepathChoiceText.h>
#include <koRepathEngine.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

QString ruleName(const RepathChoice& choice)
{
    switch (choice.rule) {
    case RepathChoice::Rule::SingleFile:
        return QStringLiteral("single-file");
    case RepathChoice::Rule::LongestTail:
        return QStringLiteral("longest-tail");
    case RepathChoice::Rule::FirstMet:
        return QStringLiteral("first-met");
    case RepathChoice::Rule::NotFound:
        break;
    }
    return QStringLiteral("not-found");
}

QJsonArray pathsJson(const QStringList& paths)
{
    QJsonArray array;
    for (const QString& path : paths)
        array.append(koReferenceJson::path(path));
    return array;
}

QString linkName(const RepathLink& link)
{
    return link.kind == RepathTarget::Smart ? QStringLiteral("smart") : QStringLiteral("source");
}

} // namespace

koRepathPlan::koRepathPlan(const QVector<RepathLink>& links, const QVector<RepathChoice>& choices, const QString& newDir)
    : m_links(links)
    , m_choices(choices)
    , m_newDir(newDir)
{
}

int koRepathPlan::found() const
{
    return int(std::count_if(m_choices.cbegin(), m_choices.cend(),
                             [](const RepathChoice& choice) { return !choice.path.isEmpty(); }));
}

QString koRepathPlan::result(const RepathChoice& choice) const
{
    if (choice.path.isEmpty())
        return tr("Not found");
    return choice.isAmbiguous() ? tr("Ambiguous") : tr("Found");
}

void koRepathPlan::writeText(QTextStream& out) const
{
    const QDir folder = koReferenceReport::projectFolder();
    out << tr("Reference\tLink\tOld path\tNew path\tResult\tChosen by\tOther candidates") << '\n';
    for (int i = 0; i < m_links.size(); ++i) {
        const RepathLink& link = m_links.at(i);
        const RepathChoice& choice = m_choices.at(i);
        out << koReferenceReport::escaped(koNodeInformation::scenePath(link.node)) << '\t' << linkName(link) << '\t'
            << koReferenceReport::shownPath(link.oldPath, folder) << '\t'
            << koReferenceReport::shownPath(plannedRepathPath(link, choice, m_newDir), folder) << '\t' << result(choice)
            << '\t' << koRepathChoiceText::rule(choice);
        for (const QString& other : choice.otherCandidates())
            out << '\t' << koReferenceReport::shownPath(other, folder);
        out << '\n';
    }
}

QJsonObject koRepathPlan::linkJson(int i) const
{
    const RepathLink& link = m_links.at(i);
    const RepathChoice& choice = m_choices.at(i);
    QJsonObject json{{QStringLiteral("reference"), koNodeInformation::scenePath(link.node)},
                     {QStringLiteral("link"), linkName(link)},
                     {QStringLiteral("oldPath"), koReferenceJson::path(link.oldPath)},
                     {QStringLiteral("newPath"), koReferenceJson::path(plannedRepathPath(link, choice, m_newDir))},
                     {QStringLiteral("found"), !choice.path.isEmpty()},
                     {QStringLiteral("chosenBy"), ruleName(choice)},
                     {QStringLiteral("candidates"), std::max(choice.candidates.size(), choice.path.isEmpty() ? 0 : 1)},
                     {QStringLiteral("otherCandidates"), pathsJson(choice.otherCandidates())}};
    if (choice.rule == RepathChoice::Rule::LongestTail)
        json.insert(QStringLiteral("tailFolders"), choice.tailFolders);
    return json;
}

void koRepathPlan::writeJson(bool written, QTextStream& out) const
{
    QJsonArray links;
    for (int i = 0; i < m_links.size(); ++i)
        links.append(linkJson(i));
    const QJsonObject report{
        {QStringLiteral("project"), koReferenceJson::path(koService<koFileIOService>()->getProjectPath())},
        {QStringLiteral("newDir"), koReferenceJson::path(m_newDir)},
        {QStringLiteral("links"), links},
        {QStringLiteral("found"), found()},
        {QStringLiteral("notFound"), notFound()},
        {QStringLiteral("written"), written},
        {QStringLiteral("references"), koReferenceJson::references(koReferenceReport::references())}};
    out << QJsonDocument(report).toJson();
}
