// SPDX-License-Identifier: MIT
#include "host/valueselection.h"

#include "host/values.h"
#include "support/recordingobserver.h"

#include <QtTest>

#include <limits>
#include <memory>

namespace {

const QVector<int> CONTENT{eCHANGE_CONTENT};
const QVector<int> ITEMS{eCHANGE_ITEMS};
const QVector<int> NOTHING{};

const QString USB = QStringLiteral("USB");
const QString LSB = QStringLiteral("LSB");
const QString CW = QStringLiteral("CW");

} // namespace

class tst_ValueSelection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_observer = std::make_unique<RecordingObserver>();
        m_selection = std::make_unique<ValueSelection>();
        m_selection->AddItem(USB, 2.5, 10, nullptr);
        m_selection->AddItem(LSB, -2.5, 20, nullptr);
        m_selection->AddItem(CW, 0.5, 30, nullptr);
        m_selection->AddObserver(m_observer.get());
    }

    void cleanup()
    {
        m_observer->onUpdate = nullptr;
        m_selection.reset();
        m_observer.reset();
    }

    void aNewSelectionIsEmptyAndNothingIsCurrent()
    {
        ValueSelection selection;
        QCOMPARE(selection.GetItemCount(), 0L);
        QVERIFY(!selection.GetCurrentItem());
        QCOMPARE(selection.GetStringValue(), QString());
        QCOMPARE(selection.GetCurrentValue(), 0.0);
    }

    void addingMakesNothingCurrent()
    {
        QCOMPARE(m_selection->GetItemCount(), 3L);
        QVERIFY(!m_selection->GetCurrentItem());
        QCOMPARE(m_selection->GetStringValue(), QString());
    }

    void addingAnnouncesTheListOnce()
    {
        m_selection->AddItem(QStringLiteral("AM"), 1, 40, nullptr);
        QCOMPARE(m_observer->Codes(), ITEMS);
        m_selection->AddItems({QStringLiteral("FM"), QStringLiteral("RTTY")}, nullptr);
        QCOMPARE(m_observer->Count(), 2);
        m_selection->AddItems({}, nullptr);
        QCOMPARE(m_observer->Count(), 2);
        m_selection->AddItem(QStringLiteral("PSK"), 1, 50, m_observer.get());
        QCOMPARE(m_observer->Count(), 2);
    }

    void namesGetTheirIndexAsKeyAndValue()
    {
        m_selection->AddItems({QStringLiteral("FM"), QStringLiteral("RTTY")}, nullptr);
        QCOMPARE(m_selection->GetItemCount(), 5L);
        const SelectionItem* const item = m_selection->GetItem(4L);
        QCOMPARE(item->GetName(), QStringLiteral("RTTY"));
        QCOMPARE(item->GetKey(), 4L);
        QCOMPARE(item->GetValue(), 4.0);
    }

    void anItemIsTakenOverOnce()
    {
        auto* const item = new SelectionItem(QStringLiteral("AM"), 1, 40);
        QCOMPARE(m_selection->AddItem(item, nullptr), item);
        QVERIFY(!m_selection->AddItem(item, nullptr));
        ValueSelection other;
        QVERIFY(!other.AddItem(item, nullptr));
        QVERIFY(!m_selection->AddItem(nullptr, nullptr));
        QCOMPARE(m_selection->GetItemCount(), 4L);
        QCOMPARE(m_observer->Codes(), ITEMS);
    }

    void itemsOfAnotherSelectionAreCopied()
    {
        ValueSelection other;
        other.AddItem(QStringLiteral("AM"), 1, 40, nullptr);
        other.AddItem(QStringLiteral("FM"), 2, 50, nullptr);
        other.Select(40L, nullptr);
        m_selection->AddItemsFrom(other, nullptr);
        QCOMPARE(m_observer->Codes(), ITEMS);
        QCOMPARE(m_selection->GetItemCount(), 5L);
        QVERIFY(m_selection->GetItem(3L) != other.GetItem(0L));
        QCOMPARE(m_selection->GetItem(3L)->GetKey(), 40L);
        QVERIFY(!m_selection->GetCurrentItem());
        QCOMPARE(other.GetItemCount(), 2L);
        m_selection->AddItemsFrom(ValueSelection(), nullptr);
        QCOMPARE(m_observer->Codes(), ITEMS);
    }

    void aSelectionCanAddItsOwnItems()
    {
        m_selection->AddItemsFrom(*m_selection, nullptr);
        QCOMPARE(m_selection->GetItemCount(), 6L);
        QCOMPARE(m_selection->GetItem(5L)->GetName(), CW);
    }

    void anItemIsSelected_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("by key") << 0;
        QTest::newRow("by equal value") << 1;
        QTest::newRow("by nearest value") << 2;
        QTest::newRow("by wide name") << 3;
        QTest::newRow("by name") << 4;
        QTest::newRow("by text") << 5;
    }

    void anItemIsSelected()
    {
        QFETCH(int, way);
        const auto select = [&] {
            switch (way) {
            case 0:
                return m_selection->Select(20L, nullptr);
            case 1:
                return m_selection->Select(-2.5, nullptr, false);
            case 2:
                return m_selection->Select(-100.0, nullptr, true);
            case 3:
                return m_selection->Select(L"LSB", nullptr);
            case 4:
                return m_selection->Select(LSB, nullptr);
            default:
                m_selection->SetStringValue(LSB, nullptr);
                return true;
            }
        };
        QVERIFY(select());
        QCOMPARE(m_selection->GetCurrentItem(), m_selection->GetItem(1L));
        QCOMPARE(m_selection->GetStringValue(), LSB);
        QCOMPARE(m_selection->GetCurrentValue(), -2.5);
        QCOMPARE(m_observer->Codes(), CONTENT);
        QVERIFY2(select(), "selecting what is current succeeds");
        QCOMPARE(m_observer->Codes(), CONTENT);
    }

    void whatIsNotThereIsNotSelected()
    {
        QVERIFY(m_selection->Select(CW, m_observer.get()));
        QVERIFY(!m_selection->Select(99L, nullptr));
        QVERIFY(!m_selection->Select(1.0, nullptr, false));
        QVERIFY(!m_selection->Select(std::numeric_limits<double>::quiet_NaN(), nullptr, true));
        QVERIFY(!m_selection->Select(L"cw", nullptr));
        QVERIFY(!m_selection->Select(static_cast<const wchar_t*>(nullptr), nullptr));
        QVERIFY(!m_selection->Select(QStringLiteral("cw"), nullptr));
        m_selection->SetStringValue(QString(), nullptr);
        QCOMPARE(m_selection->GetStringValue(), CW);
        QCOMPARE(m_observer->Codes(), NOTHING);
        QVERIFY(!ValueSelection().Select(1.0, nullptr, true));
    }

    void ofTwoNearestValuesTheFirstIsSelected()
    {
        QVERIFY(m_selection->Select(-1.0, nullptr, true)); // 1.5 from LSB and from CW
        QCOMPARE(m_selection->GetStringValue(), LSB);
        QVERIFY(m_selection->Select(1.4, nullptr, true));
        QCOMPARE(m_selection->GetStringValue(), CW);
    }

    void aLookUpTakesTheFirstOfSeveral()
    {
        SelectionItem* const first = m_selection->GetItem(0L);
        m_selection->AddItem(USB, 2.5, 10, nullptr);
        QCOMPARE(m_selection->GetItem(USB), first);
        QCOMPARE(m_selection->GetItem(2.5), first);
        QCOMPARE(m_selection->GetItemIndex(10), 0L);
        QVERIFY(m_selection->Select(USB, nullptr));
        QCOMPARE(m_selection->GetCurrentItem(), first);
    }

    void lookUpsKnowWhatIsAbsent()
    {
        QVERIFY(!m_selection->GetItem(QStringLiteral("usb")));
        QVERIFY(!m_selection->GetItem(2.4));
        QVERIFY(!m_selection->GetItem(3L));
        QVERIFY(!m_selection->GetItem(-1L));
        QCOMPARE(m_selection->GetItemIndex(30), 2L);
        QCOMPARE(m_selection->GetItemIndex(2), -1L);
        QCOMPARE(m_selection->GetKeyForItemName(CW), 30L);
        QCOMPARE(m_selection->GetKeyForItemName(QString()), -1L);
        QCOMPARE(m_selection->GetItemNameForKey(20), LSB);
        QCOMPARE(m_selection->GetItemNameForKey(2), QString());
    }

    void deletingTheCurrentItemLeavesNoneCurrent()
    {
        m_selection->Select(USB, m_observer.get());
        m_selection->DeleteItem(m_selection->GetItem(USB), nullptr);
        QCOMPARE(m_observer->Codes(), ITEMS);
        QVERIFY(!m_selection->GetCurrentItem());
        QCOMPARE(m_selection->GetStringValue(), QString());
        QCOMPARE(m_selection->GetItemCount(), 2L);
    }

    void deletingAnotherItemLeavesTheCurrentOne()
    {
        m_selection->Select(CW, m_observer.get());
        m_selection->DeleteItem(m_selection->GetItem(USB), nullptr);
        QCOMPARE(m_selection->GetStringValue(), CW);
        QCOMPARE(m_observer->Codes(), ITEMS);
    }

    void deletingEverythingAnnouncesTheListAlone()
    {
        m_selection->Select(CW, m_observer.get());
        m_selection->DeleteItems(nullptr);
        QCOMPARE(m_observer->Codes(), ITEMS);
        QVERIFY(!m_selection->GetCurrentItem());
        QCOMPARE(m_selection->GetItemCount(), 0L);
    }

    void deletingNothingAnnouncesNothing()
    {
        SelectionItem stranger(USB, 2.5, 10);
        m_selection->DeleteItem(&stranger, nullptr);
        m_selection->DeleteItem(nullptr, nullptr);
        ValueSelection empty;
        RecordingObserver observer;
        empty.AddObserver(&observer);
        empty.DeleteItems(nullptr);
        QCOMPARE(m_observer->Codes(), NOTHING);
        QCOMPARE(observer.Codes(), NOTHING);
        QCOMPARE(m_selection->GetItemCount(), 3L);
        empty.DeleteObserver(&observer);
    }

    void aDeletedItemLivesUntilEverybodyHasHeard()
    {
        SelectionItem* const item = m_selection->GetItem(USB);
        QString seen;
        // cppcheck-suppress danglingLifetime; cleanup() forgets it before anything else happens
        m_observer->onUpdate = [&](Observable*, TChangeCode) { seen = item->GetName(); };
        m_selection->DeleteItem(item, nullptr);
        QCOMPARE(seen, USB);
    }

    void anObserverMayDeleteTheNewItem()
    {
        m_observer->onUpdate = [&](Observable*, TChangeCode) {
            if (auto* const item = m_selection->GetItem(QStringLiteral("AM")))
                m_selection->DeleteItem(item, nullptr);
        };
        QVERIFY(!m_selection->AddItem(QStringLiteral("AM"), 1, 40, nullptr));
        QCOMPARE(m_selection->GetItemCount(), 3L);
    }

    void anObserverMaySelectWhileItHearsOfTheList()
    {
        m_observer->onUpdate = [&](Observable*, TChangeCode code) {
            if (code == eCHANGE_ITEMS)
                m_selection->Select(QStringLiteral("AM"), nullptr);
        };
        SelectionItem* const item = m_selection->AddItem(QStringLiteral("AM"), 1, 40, nullptr);
        QVERIFY(item);
        QCOMPARE(m_selection->GetCurrentItem(), item);
        QCOMPARE(m_observer->Codes(), (QVector<int>{eCHANGE_ITEMS, eCHANGE_CONTENT}));
    }

    void anObserverMayDeleteTheSelection_data()
    {
        QTest::addColumn<int>("act");
        QTest::newRow("Select") << 0;
        QTest::newRow("AddItem") << 1;
        QTest::newRow("AddItems") << 2;
        QTest::newRow("AddItemsFrom") << 3;
        QTest::newRow("DeleteItem") << 4;
        QTest::newRow("DeleteItems") << 5;
        QTest::newRow("Assign") << 6;
    }

    void anObserverMayDeleteTheSelection()
    {
        QFETCH(int, act);
        m_observer->onUpdate = [&](Observable*, TChangeCode code) {
            if (code != eCHANGE_DELETED)
                m_selection.reset();
        };
        ValueSelection other;
        other.AddItem(QStringLiteral("AM"), 1, 40, nullptr);
        other.Select(40L, nullptr);
        switch (act) {
        case 0:
            QVERIFY(m_selection->Select(USB, nullptr));
            break;
        case 1:
            QVERIFY(!m_selection->AddItem(QStringLiteral("AM"), 1, 40, nullptr));
            break;
        case 2:
            m_selection->AddItems({QStringLiteral("AM")}, nullptr);
            break;
        case 3:
            m_selection->AddItemsFrom(other, nullptr);
            break;
        case 4:
            m_selection->DeleteItem(m_selection->GetItem(USB), nullptr);
            break;
        case 5:
            m_selection->DeleteItems(nullptr);
            break;
        default:
            QVERIFY(m_selection->Assign(other));
        }
        QVERIFY(!m_selection);
        QCOMPARE(m_observer->Count(), 2);
        QCOMPARE(m_observer->Codes().last(), static_cast<int>(eCHANGE_DELETED));
    }

    void contentIsTakenOverWithTheCurrentItem()
    {
        ValueSelection other;
        QVERIFY(other.Assign(*m_selection));
        QVERIFY(other.Compare(m_selection.get()));
        m_selection->Select(CW, m_observer.get());
        QVERIFY(!other.Compare(m_selection.get()));
        RecordingObserver observer;
        other.AddObserver(&observer);
        QVERIFY(other.Assign(*m_selection));
        QCOMPARE(observer.Codes(), CONTENT);
        QCOMPARE(other.GetStringValue(), CW);
        QVERIFY(other.Assign(*m_selection));
        QCOMPARE(observer.Codes(), CONTENT);
        QVERIFY(other.Assign(other));
        QCOMPARE(other.GetStringValue(), CW);
        QVERIFY(other.Assign(ValueSelection()));
        QCOMPARE(observer.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_ITEMS, eCHANGE_CONTENT}));
        QVERIFY(!other.Compare(nullptr));
        other.DeleteObserver(&observer);
    }

    void aCommandSelectsByName()
    {
        m_selection->SetName(QStringLiteral("mode"), nullptr);
        QVERIFY(m_selection->SetCommandString(QStringLiteral("mode=CW"), nullptr));
        QCOMPARE(m_selection->GetCommandStringForTransmission(), QStringLiteral("mode=CW"));
        QVERIFY(!m_selection->SetCommandString(QStringLiteral("mode=SSB"), nullptr));
        QVERIFY(!m_selection->SetCommandString(QStringLiteral("CW"), nullptr));
        QVERIFY(m_selection->SetCommandString(QStringList{QStringLiteral("mode=USB")}, nullptr));
        QCOMPARE(m_selection->GetStringValue(), USB);
    }

    void aCopyDiffersAsSoonAsOneItemDoes_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("isSame");
        QTest::newRow("the same") << CW << 0.5 << 30 << true;
        QTest::newRow("another name") << USB << 0.5 << 30 << false;
        QTest::newRow("another value") << CW << 0.75 << 30 << false;
        QTest::newRow("another key") << CW << 0.5 << 31 << false;
    }

    void aCopyDiffersAsSoonAsOneItemDoes()
    {
        QFETCH(QString, name);
        QFETCH(double, value);
        QFETCH(int, key);
        ValueSelection other;
        other.AddItem(USB, 2.5, 10, nullptr);
        other.AddItem(LSB, -2.5, 20, nullptr);
        QVERIFY(!other.Compare(m_selection.get()));
        other.AddItem(name, value, key, nullptr);
        QTEST(other.Compare(m_selection.get()), "isSame");
        QVERIFY(other.Select(10L, nullptr));
        QVERIFY(!other.Compare(m_selection.get()));
        QVERIFY(!m_selection->Compare(&other));
    }

    void contentOfAnotherKindIsNotTakenOver()
    {
        IntegerValue number;
        number.SetValue(20, nullptr);
        QVERIFY(!m_selection->Assign(number));
        QVERIFY(!m_selection->Compare(&number));
        QCOMPARE(m_selection->GetItemCount(), 3L);
        QCOMPARE(m_observer->Codes(), NOTHING);
    }

    void aNullNameSelectsNothing()
    {
        QVERIFY(!m_selection->Select(static_cast<const wchar_t*>(nullptr), nullptr));
        QVERIFY(!m_selection->GetCurrentItem());
    }

private:
    std::unique_ptr<RecordingObserver> m_observer;
    std::unique_ptr<ValueSelection> m_selection;
};

QTEST_APPLESS_MAIN(tst_ValueSelection)
#include "tst_valueselection.moc"
