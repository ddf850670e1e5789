#include "views/contrast.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QPalette>
#include <QTest>

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

} // namespace

class TestTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDisabledGroupDoesNotChangeTheAppearance()
    {
        QPalette palette = dark();
        palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::black);
        palette.setCurrentColorGroup(QPalette::Disabled);
        QVERIFY(isDark(palette));
    }

    void textCanBeRead()
    {
        for (const QPalette &palette : {light(), dark()}) {
            const QColor chrome = TovelTheme::chrome(palette);
            for (const QColor &ground : {windowBackground(palette), controlBackground(palette)})
                QVERIFY(contrast(over(secondary(palette), ground), ground) > 4.5);
            QVERIFY(contrast(systemOrange(palette), chrome) > 4.5);
        }
    }

    void textStylesGrowWithTheSessionsFont()
    {
        const QFont before = QGuiApplication::font();
        auto sizes = [font = before](int body) mutable {
            font.setPixelSize(body);
            QGuiApplication::setFont(font);
            return QList<int>{textFont(TextStyle::caption).pixelSize(),
                              textFont(TextStyle::body).pixelSize()};
        };
        const QList<int> small = sizes(9);
        QVERIFY(small[0] > 9 && small[1] > small[0]);
        QCOMPARE(sizes(small[1]), small);
        QCOMPARE(sizes(2 * small[1]), (QList<int>{2 * small[0], 2 * small[1]}));
        QGuiApplication::setFont(before);
    }
};

QTEST_MAIN(TestTheme)
#include "tst_theme.moc"
