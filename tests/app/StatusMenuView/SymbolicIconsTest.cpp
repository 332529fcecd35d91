// The same icons as files, for panels that recolor what they know by name.
#include "app/StatusItemController/Painting/MenuBarIcon.h"
#include "app/StatusMenuView/MenuIcons.h"
#include "tests/app/StatusItemController/Painting/Ink.h"
#include "tests/app/StatusMenuView/StandardMenu.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <cmath>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

struct Shape {
    QString element;
    QXmlStreamAttributes attributes;

    [[nodiscard]] std::string text(const char* name) const {
        return attributes.value(QLatin1String(name)).toString().toStdString();
    }

    [[nodiscard]] double number(const char* name, double otherwise = 0) const {
        const QLatin1String key(name);
        return attributes.hasAttribute(key) ? attributes.value(key).toDouble() : otherwise;
    }
};

QString themeFile(const QString& name) {
    return QStringLiteral(TARNWICK_ICONS "/hicolor/symbolic/apps/%1.svg").arg(name);
}

/// The shapes in such a file, in their order.
std::vector<Shape> shapes(const QString& path, QString* style = nullptr) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader reader(&file);
    std::vector<Shape> result;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() == QLatin1String("svg")) {
            continue;
        }
        if (reader.name() == QLatin1String("style")) {
            const QString id = reader.attributes().value("id").toString();
            if (style != nullptr) {
                *style = id + " " + reader.readElementText();
            }
        } else {
            result.push_back({reader.name().toString(), reader.attributes()});
        }
    }
    EXPECT_FALSE(reader.hasError()) << path.toStdString();
    return result;
}

class SymbolicBars : public testing::TestWithParam<int> {
protected:
    QString path = themeFile(QStringLiteral("tarnwick-bars-%1-symbolic").arg(GetParam()));
};

INSTANTIATE_TEST_SUITE_P(Counts, SymbolicBars, testing::Range(0, 6));

std::vector<QString> allSymbolicFiles() {
    std::vector<QString> files{themeFile("tarnwick-failed-symbolic")};
    for (int bars = 0; bars <= 5; ++bars) {
        files.push_back(themeFile(QStringLiteral("tarnwick-bars-%1-symbolic").arg(bars)));
    }
    return files;
}

} // namespace

TEST_P(SymbolicBars, TheyAreTheStatusItemsBarsFittedToTheirGrid) {
    const std::vector<Shape> rects = shapes(path);
    const std::vector<MenuBarIcon::Bar> bars = MenuBarIcon::barGeometry(GetParam(), 5);
    ASSERT_EQ(rects.size(), bars.size());

    const double scale = 14.0 / MenuBarIcon::bars(0)->size().width();
    const auto onGrid = [scale](double points) { return std::round(points * scale); };
    for (std::size_t index = 0; index < bars.size(); ++index) {
        EXPECT_EQ(rects[index].number("x"), 1 + onGrid(bars[index].rect.left()));
        EXPECT_EQ(rects[index].number("width"), onGrid(bars[index].rect.width()));
        EXPECT_EQ(rects[index].number("height"), onGrid(bars[index].rect.height()));
        EXPECT_EQ(rects[index].number("y") + rects[index].number("height"), 13);
        EXPECT_EQ(rects[index].number("opacity", 1), bars[index].opacity);
    }
}

TEST(SymbolicIcons, TheTriangleIsTheStatusItemsTriangle) {
    constexpr int side = 128;
    const auto blank = [] {
        QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        return image;
    };
    QImage ofFile = blank();
    {
        QSvgRenderer renderer(themeFile("tarnwick-failed-symbolic"));
        ASSERT_TRUE(renderer.isValid());
        QPainter painter(&ofFile);
        renderer.render(&painter);
    }
    QImage ofPath = blank();
    {
        QPainter painter(&ofPath);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / 16.0, side / 16.0);
        painter.translate(0, 1);
        painter.fillPath(MenuBarIcon::trianglePath(), Qt::black);
    }

    double difference = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            difference += std::abs(test::inkAt(ofFile, x, y) - test::inkAt(ofPath, x, y)) / 255.0;
        }
    }
    EXPECT_LT(difference, 0.01 * test::inkOf(ofPath, ofPath.rect()));
}

TEST(SymbolicIcons, EveryShapeTakesTheColorOfThePanelsText) {
    for (const QString& file : allSymbolicFiles()) {
        QString style;
        const std::vector<Shape> drawn = shapes(file, &style);

        EXPECT_TRUE(style.startsWith("current-color-scheme .ColorScheme-Text")) << style.toStdString();
        ASSERT_FALSE(drawn.empty());
        for (const Shape& shape : drawn) {
            EXPECT_EQ(shape.text("class"), "ColorScheme-Text") << file.toStdString();
            EXPECT_EQ(shape.text("fill"), "currentColor") << file.toStdString();
        }
    }
}

TEST(SymbolicIcons, TheProgramHasAnIconOfAnySize) {
    EXPECT_TRUE(
        QSvgRenderer(QString(TARNWICK_ICONS "/hicolor/scalable/apps/org.tarnwick.tarnwick.svg")).isValid());
}

TEST(MenuIcons, ThereIsOneForEveryItemWithoutAThemeToo) {
    const test::StandardMenu standard;
    for (const MenuItem& item : standard.menu.items()) {
        if (!item.iconName.empty()) {
            const QString path = QStringLiteral(":/tarnwick/icons/%1.svg").arg(item.iconName.c_str());
            EXPECT_TRUE(QSvgRenderer(path).isValid()) << item.iconName;
        }
    }
}

TEST(MenuIcons, TheyHaveTheColorOfTheText) {
    const QColor color(200, 40, 90);
    const QImage image = menuIcon("help-about-symbolic", 16, color, 2).toImage();

    EXPECT_EQ(image.size(), QSize(32, 32));
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (test::inkAt(image, x, y) == 255) {
                ++drawn;
                EXPECT_EQ(image.pixelColor(x, y), color);
            }
        }
    }
    EXPECT_GT(drawn, 20);
}

} // namespace tarnwick
