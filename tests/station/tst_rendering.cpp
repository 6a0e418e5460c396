// SPDX-License-Identifier: MIT
// Read back by Qt's own reader of PNG files.
#include "station/picture/rendering.h"

#include "station/picture/png.h"

#include <QImage>
#include <QtTest>

using namespace inspect;

namespace {

QByteArray drawing(const QByteArray& content, int width = 40, int height = 20)
{
    const QByteArray size =
        "width='" + QByteArray::number(width) + "' height='" + QByteArray::number(height) + "'";
    return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' " +
           size + "><style>.mark.dot{fill:#0072b2}</style><rect " + size + " fill='#fff'/>" +
           content + "</svg>";
}

QImage image(const QByteArray& png)
{
    return QImage::fromData(png, "PNG");
}

} // namespace

class tst_Rendering : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shapesKeepPlaceSizeAndColour()
    {
        const QImage seen =
            image(rendered(drawing("<rect class='mark dot' x='10' y='5' width='8' height='4'/>")));
        QCOMPARE(seen.size(), QSize(40, 20));
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x) {
                const bool isMark = x >= 10 && x < 18 && y >= 5 && y < 9;
                QCOMPARE(seen.pixel(x, y), isMark ? qRgb(0, 0x72, 0xb2) : qRgb(255, 255, 255));
            }
        }
    }

    void anImageWithinIsShown()
    {
        const Palette red = {{{255, 0, 0}}};
        const QByteArray within = png(std::vector<std::uint8_t>(64, 0), 8, red).toBase64();
        const QImage seen = image(rendered(drawing("<image x='10' y='5' width='8' height='8' "
                                                   "xlink:href='data:image/png;base64," +
                                                   within + "'/>")));
        QCOMPARE(seen.pixel(14, 9), qRgb(255, 0, 0));
        QCOMPARE(seen.pixel(5, 9), qRgb(255, 255, 255));
    }

    void lettersLeaveInk()
    {
        const QImage seen = image(rendered(drawing("<text x='5' y='16'>H</text>")));
        int dark = 0;
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x)
                dark += qGray(seen.pixel(x, y)) < 128 ? 1 : 0;
        }
        QVERIFY2(dark >= 10 && dark <= 150, qPrintable(QString::number(dark)));
    }

    void theLongestPictureFits()
    {
        QCOMPARE(image(rendered(drawing({}, 1288, 19440))).size(), QSize(1288, 19440));
    }

    void whatIsNoImageGivesNothing_data()
    {
        QTest::addColumn<QByteArray>("svg");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no drawing") << QByteArray("CQ CQ");
        QTest::newRow("cut") << drawing({}).left(100);
        QTest::newRow("too high") << drawing({}, 10, 100000);
    }
    void whatIsNoImageGivesNothing()
    {
        QFETCH(QByteArray, svg);
        QVERIFY(rendered(svg).isEmpty());
    }
};

QTEST_APPLESS_MAIN(tst_Rendering)
#include "tst_rendering.moc"
