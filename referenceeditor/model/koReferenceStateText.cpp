#include "koReferenceStateText.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koStyle.h>

#include <QColor>
#include <QHash>

namespace {

// Every cell of a large scene is coloured on each paint and each search.
QString colorName(const QColor& color)
{
    static QHash<QRgb, QString> names;
    auto name = names.constFind(color.rgb());
    if (name == names.constEnd())
        name = names.insert(color.rgb(), color.name());
    return name.value();
}

QColor stateColor(koReferenceTypes::FileState state, const kodReferenceNode& node)
{
    if (!node.isValid() || node.isLocked())
        return koStyle::getLockedItemColor();
    switch (state) {
    case koReferenceTypes::Missing:
        return koStyle::getReferenceMissingColor();
    case koReferenceTypes::OutOfDate:
        return koStyle::getReferenceOutOfDateColor();
    default:
        return koStyle::getReferenceUpToDateColor();
    }
}

} // namespace

QString koReferenceStateText::colored(const QString& label, koReferenceTypes::FileState state,
                                      const kodReferenceNode& node)
{
    if (!coloringEnabled())
        return label;
    return QLatin1String("<font color=\"") + colorName(stateColor(state, node)) + QLatin1String("\">") + label
        + QLatin1String("</font>");
}

bool koReferenceStateText::coloringEnabled()
{
    static const bool enabled = [] {
        const auto* preferences = koService<koPreferencesService>();
        return !preferences || preferences->getBoolValue(QStringLiteral("Colored State Texts"), true);
    }();
    return enabled;
}
