// SPDX-License-Identifier: MIT
#include "signal/morse/framefloors.h"

#include <QtTest>

#include <vector>

using namespace demodulator;

class tst_FrameFloors : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void eachFrameIsAskedForOnceWhileItIsKept()
    {
        FrameFloors floors;
        std::vector<std::int64_t> asked;
        const auto floorOf = [&asked](std::int64_t frame) {
            asked.push_back(frame);
            return 1.0;
        };
        floors.keep(3, 5, floorOf);
        floors.keep(4, 6, floorOf);
        QCOMPARE(asked, std::vector<std::int64_t>({3, 4, 5, 6}));
        floors.keep(3, 3, floorOf); // let go in the meantime
        QCOMPARE(asked.back(), std::int64_t{3});
    }
    void oneInSoManyIsWeaker()
    {
        FrameFloors floors;
        // 3, 2, 1, 6, 5, 4
        floors.keep(0, 5, [](std::int64_t frame) { return 1.0 + (5 * frame + 2) % 6; });
        QCOMPARE(floors.above(6, 0, 5), 2.0);
        QCOMPARE(floors.above(2, 0, 5), 4.0);
        QCOMPARE(floors.above(3, 0, 5), 3.0);
        QCOMPARE(floors.above(2, 1, 3), 2.0);
        QCOMPARE(floors.above(2, 4, 100), 5.0);
        QCOMPARE(floors.above(6, 4, 4), 5.0);
    }
    void withoutFramesThereIsNone()
    {
        FrameFloors floors;
        QCOMPARE(floors.above(2, 0, 9), 0.0);
        floors.keep(0, 5, [](std::int64_t) { return 1.0; });
        QCOMPARE(floors.above(2, 6, 9), 0.0);
        floors.keep(7, 6, [](std::int64_t) { return 1.0; });
        QCOMPARE(floors.above(2, 0, 9), 0.0);
    }
};

QTEST_APPLESS_MAIN(tst_FrameFloors)
#include "tst_framefloors.moc"
