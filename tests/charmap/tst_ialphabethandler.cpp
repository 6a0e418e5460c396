// SPDX-License-Identifier: MIT
#include "charmap/ialphabethandler.h"

#include <QtTest>

#include <cstring>

namespace {

/// The place of a virtual operation in the table, counted from the destructor as 0. By the C++
/// ABI of everything but Windows, a pointer to a virtual member holds its offset in the table plus
/// one, and a virtual destructor takes two entries.
template <typename Operation>
int slot(Operation operation)
{
    std::ptrdiff_t offset = 0;
    static_assert(sizeof operation >= sizeof offset, "an unknown ABI");
    std::memcpy(&offset, &operation, sizeof offset);
    return static_cast<int>((offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}

class Handler : public IAlphabetHandler
{
public:
    explicit Handler(bool& deleted)
        : m_deleted(deleted)
    {
    }
    ~Handler() override { m_deleted = true; }

    void SetAlphabetsDir(const QString&) override {}
    bool SetAlphabet(const QString&) override { return false; }
    void SetDecoder(const QString&) override {}
    QString Alphabet() override { return {}; }
    QStringList AvailableAlphabets() override { return {}; }
    bool TextDirectionRTL() override { return false; }
    void ResetInternalState() override {}
    QString Translate(const QString&) override { return {}; }
    QString Backtranslate(const QString&) override { return {}; }

private:
    bool& m_deleted;
};

} // namespace

class tst_IAlphabetHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theOperationsStandInTheOrderInWhichTheHostCallsThem()
    {
        QCOMPARE(slot(&IAlphabetHandler::SetAlphabetsDir), 1);
        QCOMPARE(slot(&IAlphabetHandler::SetAlphabet), 2);
        QCOMPARE(slot(&IAlphabetHandler::SetDecoder), 3);
        QCOMPARE(slot(&IAlphabetHandler::Alphabet), 4);
        QCOMPARE(slot(&IAlphabetHandler::AvailableAlphabets), 5);
        QCOMPARE(slot(&IAlphabetHandler::TextDirectionRTL), 6);
        QCOMPARE(slot(&IAlphabetHandler::ResetInternalState), 7);
        QCOMPARE(slot(&IAlphabetHandler::Translate), 8);
        QCOMPARE(slot(&IAlphabetHandler::Backtranslate), 9);
    }

    void theInterfaceHoldsNoData() { QCOMPARE(sizeof(IAlphabetHandler), sizeof(void*)); }

    void aHandlerIsDeletedThroughTheInterface()
    {
        bool deleted = false;
        IAlphabetHandler* const handler = new Handler(deleted);
        delete handler;
        QVERIFY(deleted);
    }
};

QTEST_APPLESS_MAIN(tst_IAlphabetHandler)
#include "tst_ialphabethandler.moc"
