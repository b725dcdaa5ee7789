#include <kovis/koStyle.h>

#include <QApplication>
#include <QPalette>
#include <QtTest>

namespace {

double luminance(const QColor& color)
{
    const auto channel = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) + 0.0722 * channel(color.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const double la = luminance(a);
    const double lb = luminance(b);
    return (qMax(la, lb) + 0.05) / (qMin(la, lb) + 0.05);
}

} // namespace

class tst_kostyle : public QObject
{
    Q_OBJECT

private slots:
    void coloursAreReadable_data();
    void coloursAreReadable();
};

void tst_kostyle::coloursAreReadable_data()
{
    QTest::addColumn<QColor>("base");
    QTest::newRow("white") << QColor(Qt::white);
    QTest::newRow("light grey") << QColor(0xf0, 0xf0, 0xf0);
    QTest::newRow("dark grey") << QColor(0x35, 0x35, 0x35);
    QTest::newRow("near black") << QColor(0x19, 0x19, 0x19);
}

void tst_kostyle::coloursAreReadable()
{
    QFETCH(QColor, base);

    const QPalette original = QApplication::palette();
    QPalette palette = original;
    palette.setColor(QPalette::Base, base);
    QApplication::setPalette(palette);

    const QList<QPair<const char*, QColor>> colours{{"up to date", koStyle::getReferenceUpToDateColor()},
                                                    {"out of date", koStyle::getReferenceOutOfDateColor()},
                                                    {"missing", koStyle::getReferenceMissingColor()},
                                                    {"locked", koStyle::getLockedItemColor()},
                                                    {"inactive", koStyle::getInactiveNodeColor()}};
    QApplication::setPalette(original);

    for (int i = 0; i < colours.size(); ++i) {
        const double ratio = contrast(colours.at(i).second, base);
        QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("%1: %2").arg(colours.at(i).first).arg(ratio)));
        for (int j = i + 1; j < colours.size(); ++j)
            QVERIFY2(colours.at(i).second != colours.at(j).second, colours.at(i).first);
    }
}

QTEST_MAIN(tst_kostyle)
#include "tst_kostyle.moc"
