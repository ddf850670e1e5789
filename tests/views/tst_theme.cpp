#include "views/text_style.h"
#include "views/theme.h"

#include <QPalette>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace tovel;

namespace {

QPalette light() { return QPalette(QColor(246, 245, 248)); }
QPalette dark() { return QPalette(QColor(30, 27, 42)); }

QColor over(const QColor &color, const QColor &background)
{
    const auto mix = [&](float above, float below) {
        return above * color.alphaF() + below * (1 - color.alphaF());
    };
    return QColor::fromRgbF(mix(color.redF(), background.redF()),
                            mix(color.greenF(), background.greenF()),
                            mix(color.blueF(), background.blueF()));
}

// Contrast ratio of the Web Content Accessibility Guidelines.
double contrast(const QColor &text, const QColor &background)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
            + 0.0722 * linear(color.blueF());
    };
    const auto [low, high]
        = std::minmax({luminance(over(text, background)), luminance(background)});
    return (high + 0.05) / (low + 0.05);
}

} // namespace

class TestTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colorsFollowTheAppearance()
    {
        QCOMPARE(TovelTheme::accent(light()), QColor(27, 20, 100));
        QCOMPARE(TovelTheme::accent(dark()), QColor::fromRgbF(0.74F, 0.71F, 1.0F));
        QCOMPARE(TovelTheme::chromeColor(light()), QColor(243, 240, 248));
        QCOMPARE(TovelTheme::chromeColor(dark()), QColor::fromRgbF(0.16F, 0.14F, 0.23F));
        QCOMPARE(TovelTheme::chrome(dark()), TovelTheme::chromeColor(dark()));
        QCOMPARE(TovelTheme::orange(), QColor(247, 147, 30));
        for (const QPalette &palette : {light(), dark()}) {
            QCOMPARE(TovelTheme::separator(palette),
                     withOpacity(TovelTheme::accent(palette), 0.12));
        }
    }

    void aDisabledGroupDoesNotChangeTheAppearance()
    {
        QPalette palette = dark();
        palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::black);
        palette.setCurrentColorGroup(QPalette::Disabled);
        QVERIFY(isDark(palette));
    }

    void textCanBeRead()
    {
        constexpr double enough = 4.5;
        for (const QPalette &palette : {light(), dark()}) {
            const QColor chrome = TovelTheme::chrome(palette);
            QVERIFY(contrast(secondary(palette), windowBackground(palette)) > enough);
            QVERIFY(contrast(secondary(palette), controlBackground(palette)) > enough);
            QVERIFY(contrast(systemOrange(palette), chrome) > enough);
        }
    }

    void textStylesGrowWithTheSessionsFont()
    {
        const QFont before = QGuiApplication::font();
        for (const int body : {9, 13, 26}) {
            QFont font = before;
            font.setPixelSize(body);
            QGuiApplication::setFont(font);
            const int shown = std::max(13, body);
            QCOMPARE(textFont(TextStyle::body).pixelSize(), shown);
            QCOMPARE(textFont(TextStyle::caption).pixelSize(), qRound(shown * 12 / 13.0));
            QCOMPARE(textFont(TextStyle::caption2).pixelSize(), qRound(shown * 11 / 13.0));
        }
        QGuiApplication::setFont(before);
        QCOMPARE(textFont(TextStyle::headline).weight(), QFont::Bold);
    }
};

QTEST_MAIN(TestTheme)
#include "tst_theme.moc"
