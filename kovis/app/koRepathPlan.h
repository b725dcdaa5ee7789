#pragma once

#include "koHostCommandLine.h"

#include <RepathChoice.h>
#include <RepathLink.h>

#include <QCoreApplication>
#include <QJsonObject>
#include <QTextStream>
#include <QVector>

// What kovis-host --repath found for each link, as text or as JSON.
class koRepathPlan
{
    Q_DECLARE_TR_FUNCTIONS(koRepathPlan)
public:
    koRepathPlan(const QVector<RepathLink>& links, const QVector<RepathChoice>& choices, const QString& newDir);

    int found() const;
    int notFound() const { return m_links.size() - found(); }

    // One line per link: reference, link, old path, new path, Found, Ambiguous or Not
    // found, the rule of the choice, then each other file of the name.
    void writeText(QTextStream& out) const;
    // The links, whether the project was written, and every reference as it stands now.
    void writeJson(bool written, QTextStream& out) const;

private:
    QString result(const RepathChoice& choice) const;
    QJsonObject linkJson(int i) const;

    QVector<RepathLink> m_links;
    QVector<RepathChoice> m_choices;
    QString m_newDir;
};
