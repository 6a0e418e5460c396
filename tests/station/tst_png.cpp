// SPDX-License-Identifier: MIT
#include "station/picture/png.h"

#include "support/pngpixels.h"

#include <QtTest>

using namespace inspect;

namespace {

Palette greys()
{
    Palette palette = {};
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const auto grey = static_cast<std::uint8_t>(17 * i);
        palette[i] = {grey, grey, grey};
    }
    return palette;
}

} // namespace

class tst_Png : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pixelsComeBack_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("even") << 16 << 5;
        QTest::newRow("odd") << 7 << 3;
        QTest::newRow("large") << 1251 << 40;
    }
    void pixelsComeBack()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        std::vector<std::uint8_t> pixels;
        for (int i = 0; i < width * height; ++i)
            pixels.push_back(static_cast<std::uint8_t>(i * 7 % COLOURS));
        const testsupport::PngPixels back = testsupport::pngPixels(png(pixels, width, greys()));
        QCOMPARE(back.width, width);
        QCOMPARE(back.height, height);
        QCOMPARE(back.colours, std::vector<int>(pixels.begin(), pixels.end()));
    }

    void chunksAreThoseOfTheStandard()
    {
        const QByteArray file = png({0, 1, 2, 3}, 2, greys());
        QVERIFY(file.startsWith(QByteArray("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR", 16)));
        QVERIFY(file.contains(QByteArray("\0\0\0\x30PLTE\0\0\0\x11\x11\x11", 14)));
        // Its check sum is the same in every PNG file.
        QVERIFY(file.endsWith(QByteArray("\0\0\0\0IEND\xAE\x42\x60\x82", 12)));
    }
};

QTEST_APPLESS_MAIN(tst_Png)
#include "tst_png.moc"
