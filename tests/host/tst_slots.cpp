// SPDX-License-Identifier: MIT
// The order of the virtual operations: the plug-in and the host's libraries call each other by it.
#include "host/cfgcenter.h"
#include "host/ivtclient.h"
#include "host/resultdata.h"
#include "host/trace.h"
#include "host/tree.h"
#include "host/values.h"
#include "support/slot.h"

#include <QtTest>

#include <cstring>

class tst_Slots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The destructor takes the first two slots, so that the second operation stands in slot 2.
    void everyOperationStandsInItsSlot_data()
    {
        QTest::addColumn<int>("actual");
        QTest::addColumn<int>("slot");

        int next = 2;
        const auto row = [&next](const char* name, int actual) {
            QTest::newRow(name) << actual << next++;
        };

        row("ValueBase::SetStringValue", slot(&ValueBase::SetStringValue));
        row("ValueBase::GetStringValue", slot(&ValueBase::GetStringValue));
        row("ValueBase::GetState", slot(&ValueBase::GetState));
        row("ValueBase::SetState", slot(&ValueBase::SetState));
        row("ValueBase::HasChanged", slot(&ValueBase::HasChanged));
        row("ValueBase::GetCommandStringForTransmission",
            slot(&ValueBase::GetCommandStringForTransmission));
        row("ValueBase::SetCommandString, one",
            With<bool, const QString&, IObserver*>::slot(&ValueBase::SetCommandString));
        row("ValueBase::SetCommandString, list",
            With<bool, const QStringList&, IObserver*>::slot(&ValueBase::SetCommandString));
        row("ValueBase::GetType", slot(&ValueBase::GetType));
        row("ValueBase::GetTypeName", slot(&ValueBase::GetTypeName));
        row("ValueBase::Assign", slot(&ValueBase::Assign));
        row("ValueBase::Compare", slot(&ValueBase::Compare));
        row("ValueBase::GetCommandStringForRecording",
            slot(&ValueBase::GetCommandStringForRecording));
        row("ValueBase::SetUpdateTimerTime", slot(&ValueBase::SetUpdateTimerTime));
        row("ValueBase::OverrideTimer", slot(&ValueBase::OverrideTimer));
        row("ValueBase::KillOverrideTimer", slot(&ValueBase::KillOverrideTimer));
        row("ValueBase::CreateCommandListOptimizer", slot(&ValueBase::CreateCommandListOptimizer));
        row("ValueBase::OptimizeCommandList",
            With<void, QStringList&>::slot(&ValueBase::OptimizeCommandList));
        row("ValueBase::OptimizeCommandList, optimizer",
            With<void, QStringList&, void*>::slot(&ValueBase::OptimizeCommandList));
        row("ValueBase::PreWorkCommandList", slot(&ValueBase::PreWorkCommandList));
        row("ValueBase::AddObjectStateStringForTransmission",
            slot(&ValueBase::AddObjectStateStringForTransmission));
        row("ValueBase::AddObjectStateStringForRecording",
            slot(&ValueBase::AddObjectStateStringForRecording));
        row("ValueBase::AddCommand", slot(&ValueBase::AddCommand));
        row("ValueBase::AddCommandForTransmission", slot(&ValueBase::AddCommandForTransmission));
        row("ValueBase::CreateNextCommand", slot(&ValueBase::CreateNextCommand));

        const int firstOwn = next;
        QCOMPARE(firstOwn, 27);
        row("TextValue::SetValue", slot(&TextValue::SetValue));
        row("TextValue::GetValue", slot(&TextValue::GetValue));

        next = firstOwn;
        row("FlagValue::SetValue", slot(&FlagValue::SetValue));
        row("FlagValue::GetValue", slot(&FlagValue::GetValue));

        next = firstOwn;
        row("IntegerValue::SetValue", slot(&IntegerValue::SetValue));
        row("IntegerValue::GetValue", slot(&IntegerValue::GetValue));
        row("IntegerValue::SetMinMax", slot(&IntegerValue::SetMinMax));
        row("IntegerValue::SetMin", slot(&IntegerValue::SetMin));
        row("IntegerValue::SetMax", slot(&IntegerValue::SetMax));
        row("IntegerValue::SetStep", slot(&IntegerValue::SetStep));
        row("IntegerValue::GetMin", slot(&IntegerValue::GetMin));
        row("IntegerValue::GetMax", slot(&IntegerValue::GetMax));
        row("IntegerValue::GetStep", slot(&IntegerValue::GetStep));
        row("IntegerValue::CreateTransaction", slot(&IntegerValue::CreateTransaction));

        next = firstOwn;
        row("RealValue::SetValue", slot(&RealValue::SetValue));
        row("RealValue::GetValue", slot(&RealValue::GetValue));
        row("RealValue::SetMinMax", slot(&RealValue::SetMinMax));
        row("RealValue::SetMin", slot(&RealValue::SetMin));
        row("RealValue::SetMax", slot(&RealValue::SetMax));
        row("RealValue::SetStep", slot(&RealValue::SetStep));
        row("RealValue::GetMin", slot(&RealValue::GetMin));
        row("RealValue::GetMax", slot(&RealValue::GetMax));
        row("RealValue::GetStep", slot(&RealValue::GetStep));
        row("RealValue::CreateTransaction", slot(&RealValue::CreateTransaction));

        next = firstOwn;
        using Selection = ValueSelection;
        row("ValueSelection::GetCurrentItem", slot(&Selection::GetCurrentItem));
        row("ValueSelection::Select, key", With<bool, long, IObserver*>::slot(&Selection::Select));
        row("ValueSelection::Select, real",
            With<bool, double, IObserver*, bool>::slot(&Selection::Select));
        row("ValueSelection::Select, wide name",
            With<bool, const wchar_t*, IObserver*>::slot(&Selection::Select));
        row("ValueSelection::Select, name",
            With<bool, const QString&, IObserver*>::slot(&Selection::Select));
        row("ValueSelection::AddItems", slot(&Selection::AddItems));
        row("ValueSelection::AddItem, parts",
            With<SelectionItem*, const QString&, double, long, IObserver*>::slot(
                &Selection::AddItem));
        row("ValueSelection::AddItem, item",
            With<SelectionItem*, SelectionItem*, IObserver*>::slot(&Selection::AddItem));
        row("ValueSelection::AddItemsFrom", slot(&Selection::AddItemsFrom));
        row("ValueSelection::DeleteItem", slot(&Selection::DeleteItem));
        row("ValueSelection::DeleteItems", slot(&Selection::DeleteItems));
        row("ValueSelection::GetItemCount", slot(&Selection::GetItemCount));
        row("ValueSelection::GetItemIndex", slot(&Selection::GetItemIndex));
        row("ValueSelection::GetItem, name",
            With<SelectionItem*, const QString&>::slot(&Selection::GetItem));
        row("ValueSelection::GetItem, real",
            With<SelectionItem*, double>::slot(&Selection::GetItem));
        row("ValueSelection::GetItem, index",
            With<SelectionItem*, long>::slot(&Selection::GetItem));
        row("ValueSelection::GetCurrentValue", slot(&Selection::GetCurrentValue));
        row("ValueSelection::GetKeyForItemName", slot(&Selection::GetKeyForItemName));

        const auto firstRow = [&next, &row](const char* name, int actual) {
            next = 2;
            row(name, actual);
        };
        firstRow("Tree::Find", slot(&Tree::Find));
        row("Tree::Insert", slot(&Tree::Insert));
        firstRow("IObserver::Update", slot(&IObserver::Update));
        firstRow("IVtClient::HandOver", slot(&IVtClient::HandOver));
        firstRow("ErrorHandler::GetTraceMask", slot(&ErrorHandler::GetTraceMask));
        firstRow("ICfg::GetString", slot(&ICfg::GetString));
        firstRow("TavikResultData::Reset", slot(&TavikResultDataXml::TavikResultData::Reset));
    }

    void everyOperationStandsInItsSlot()
    {
        QFETCH(int, actual);
        QFETCH(int, slot);
        QCOMPARE(actual, slot);
    }

    void theNameOfAKeyIsNotAskedThroughTheTable()
    {
        QCOMPARE(slot(&ValueSelection::GetItemNameForKey), -1);
        QCOMPARE(slot(&ValueBase::SetName), -1);
    }

    void theTableOfAValueIsItsFirstMember()
    {
        // Slots are counted in the table that the value's own address leads to.
        IntegerValue value;
        QCOMPARE(static_cast<void*>(static_cast<ValueBase*>(&value)), static_cast<void*>(&value));
    }

    void theDestructorTakesTheFirstTwoSlots()
    {
        // Destroying through the second slot deletes; that the value leaves memory is the
        // sanitizers' to see, that it announces so is ours.
        class Watcher : public IObserver
        {
        public:
            void Update(Observable*, TChangeCode code) override { codes.append(code); }
            QVector<int> codes;
        } watcher;
        auto* const value = new TextValue;
        value->AddObserver(&watcher);
        using Destructor = void (*)(void*);
        Destructor* table = nullptr;
        std::memcpy(&table, static_cast<void*>(value), sizeof table);
        table[1](value);
        QCOMPARE(watcher.codes, QVector<int>{eCHANGE_DELETED});
    }
};

QTEST_APPLESS_MAIN(tst_Slots)
#include "tst_slots.moc"
