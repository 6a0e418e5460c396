// SPDX-License-Identifier: MIT
#include "host/resultdata.h"

#include "host/standin/resultpolicy.h"
#include "host/standin/resultwriter.h"
#include "host/trace.h"
#include "tables/hostpath.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <utility>

namespace TavikResultDataXml {

namespace {

constexpr std::size_t MOST_KEPT_bytes = std::size_t(64) << 20;
/// A save that cannot write much should not take long over finding that out.
constexpr int MOST_FAILURES = 8;

ResultPolicy currentPolicy;

unsigned long long revisionOf(const TransmissionContent& transmission)
{
    unsigned long long revision = transmission.revision;
    for (const auto& block : transmission.blocks)
        revision += block->revision;
    return revision;
}

std::size_t size_bytes(const TransmissionContent& transmission)
{
    std::size_t size = sizeof transmission;
    for (const auto& block : transmission.blocks)
        size += sizeof *block + block->frames.size() * sizeof(FrameContent) +
                block->text.size() * sizeof(char16_t);
    return size;
}

void trace(const QString& message, unsigned short line)
{
    traceMessage(message, QStringLiteral("host\\standin\\resultdata"), line);
}

} // namespace

ResultPolicyScope::ResultPolicyScope(ResultPolicy policy)
    : m_before(std::exchange(currentPolicy, std::move(policy)))
{
}

ResultPolicyScope::~ResultPolicyScope()
{
    currentPolicy = std::move(m_before);
}

DataBlock::DataBlock(int channel, int format, int flags)
    : m_content(std::make_shared<BlockContent>())
{
    m_content->channel = channel;
    m_content->format = format;
    m_content->flags = flags;
}

DataBlock::~DataBlock() = default;

void DataBlock::BeginFrame()
{
    if (!m_content->isKept)
        return;
    m_content->frames.push_back({0, m_content->text.size()});
    m_content->isFrameOpen = true;
    ++m_content->revision;
}

void DataBlock::SetTimeStamp(unsigned long long timestamp_us)
{
    if (!m_content->isFrameOpen)
        return;
    m_content->frames.back().timestamp_us = timestamp_us;
    ++m_content->revision;
}

void DataBlock::AppendData(const QString& text)
{
    if (!m_content->isFrameOpen)
        return;
    m_content->text.append(reinterpret_cast<const char16_t*>(text.utf16()),
                           static_cast<std::size_t>(text.size()));
    m_content->frames.back().textEnd = m_content->text.size();
    ++m_content->revision;
}

void DataBlock::EndFrame()
{
    m_content->isFrameOpen = false;
}

Transmission::Transmission()
    : m_content(std::make_shared<TransmissionContent>())
{
}

Transmission::~Transmission() = default;

void Transmission::SetStartTime(const QDateTime& time)
{
    m_content->startTime = time.toUTC();
    ++m_content->revision;
}

void Transmission::SetStopTime(const QDateTime& time)
{
    m_content->stopTime = time.toUTC();
    ++m_content->revision;
}

void Transmission::AddDataBlock(DataBlock* block)
{
    if (!block || block->m_content->isOwned)
        return;
    m_blocks.emplace_back(block);
    block->m_content->isOwned = true;
    block->m_content->isKept = m_content->isKept;
    m_content->blocks.push_back(block->m_content);
    ++m_content->revision;
}

class TavikResultData::Impl
{
public:
    /// A transmission that the document holds. It is owed to the disk from the save that was to
    /// write it until one has.
    struct Held
    {
        std::unique_ptr<Transmission> transmission;
        std::shared_ptr<const TransmissionContent> content;
        bool isOwed = false;
        QString owedPath;  ///< empty when the save had no name
        QString savedPath; ///< empty when it is not on disk
        unsigned long long savedRevision = 0;

        bool IsSaved() const
        {
            return !savedPath.isEmpty() && savedRevision == revisionOf(*content);
        }
    };

    /// What is owed to one file after the document gave it up.
    struct Kept
    {
        QString path; ///< empty until a save brings a name
        std::deque<std::shared_ptr<const TransmissionContent>> transmissions;
    };

    QString PathOf(const QString& fileName) const
    {
        const bool hasFolder =
            fileName.contains(QLatin1Char('/')) || fileName.contains(QLatin1Char('\\'));
        if (fileName.isEmpty() || hasFolder || workDir.isEmpty())
            return fileName;
        return workDir + QLatin1Char('/') + fileName;
    }

    /// Notes what a save to `path` has to write.
    void Demand(const QString& path)
    {
        for (Held& item : held) {
            if (item.IsSaved() && (path.isEmpty() || path == item.savedPath))
                continue;
            if (!item.isOwed || !path.isEmpty())
                item.owedPath = path;
            item.isOwed = true;
        }
        if (path.isEmpty())
            return;
        for (Kept& file : kept) {
            if (file.path.isEmpty())
                file.path = path;
        }
    }

    bool Write(const QString& path, const Transmissions& transmissions) const
    {
        return addToFile(localPath(path), transmissions,
                         policy.hasFilePerSave ? IfTaken::NextName : IfTaken::Add);
    }

    void WriteHeld(const QString& path)
    {
        Transmissions owed;
        for (const Held& item : held) {
            if (item.isOwed)
                owed.push_back(item.content);
        }
        if (path.isEmpty() || owed.empty())
            return;
        if (!Write(path, owed))
            return;
        for (Held& item : held) {
            if (!item.isOwed)
                continue;
            item.isOwed = false;
            item.savedPath = path;
            item.savedRevision = revisionOf(*item.content);
        }
    }

    /// Tries the kept files in turn; a save that has failed begins where the last one ended.
    void WriteKept(int mostFailures)
    {
        int failures = 0;
        bool isAnyWritten = false;
        for (std::size_t i = 0; i < kept.size() && failures < mostFailures; ++i) {
            nextKept = nextKept < kept.size() ? nextKept : 0;
            Kept& file = kept[nextKept++];
            if (file.path.isEmpty())
                continue;
            const Transmissions owed(file.transmissions.begin(), file.transmissions.end());
            if (!Write(file.path, owed)) {
                ++failures;
                continue;
            }
            for (const auto& content : owed)
                kept_bytes -= size_bytes(*content);
            file.transmissions.clear();
            isAnyWritten = true;
        }
        if (isAnyWritten)
            ForgetEmptyFiles();
    }

    /// Gives up every transmission; what is owed is kept.
    void Release()
    {
        for (Held& item : held) {
            if (!item.isOwed)
                continue;
            if (kept.empty() || policy.hasFilePerSave || kept.back().path != item.owedPath)
                kept.push_back({item.owedPath, {}});
            kept_bytes += size_bytes(*item.content);
            kept.back().transmissions.push_back(std::move(item.content));
        }
        held.clear();
        for (Kept& file : kept) {
            if (kept_bytes <= MOST_KEPT_bytes)
                break;
            while (kept_bytes > MOST_KEPT_bytes && !file.transmissions.empty()) {
                kept_bytes -= size_bytes(*file.transmissions.front());
                file.transmissions.pop_front();
                ++lost;
                trace(QStringLiteral("Transmission dropped, too much waits for the disk: %1")
                          .arg(file.path),
                      __LINE__);
            }
        }
        ForgetEmptyFiles();
    }

    void ForgetEmptyFiles()
    {
        kept.erase(std::remove_if(kept.begin(), kept.end(),
                                  [](const Kept& file) { return file.transmissions.empty(); }),
                   kept.end());
    }

    bool IsNothingOwed() const
    {
        return kept.empty() &&
               std::none_of(held.begin(), held.end(), [](const Held& item) { return item.isOwed; });
    }

    void Report() const
    {
        if (!policy.observer)
            return;
        std::size_t waiting = 0;
        for (const Held& item : held)
            waiting += item.isOwed ? 1 : 0;
        for (const Kept& file : kept)
            waiting += file.transmissions.size();
        policy.observer({waiting, lost});
    }

    ResultPolicy policy = currentPolicy;
    QString workDir;
    std::vector<Held> held;
    std::deque<Kept> kept; ///< the oldest first
    std::size_t kept_bytes = 0;
    std::size_t lost = 0;     ///< transmissions that were given up
    std::size_t nextKept = 0; ///< where the next save begins to try
};

TavikResultData::TavikResultData()
    : m_impl(std::make_unique<Impl>())
{
}

TavikResultData::~TavikResultData()
{
    m_impl->Release();
    m_impl->WriteKept(std::numeric_limits<int>::max());
    for (const Impl::Kept& file : m_impl->kept) {
        trace(QStringLiteral("Transmissions lost, the file cannot be written: %1").arg(file.path),
              __LINE__);
        m_impl->lost += file.transmissions.size();
    }
    m_impl->kept.clear();
    m_impl->Report();
}

void TavikResultData::SetWorkDir(const QString& directory)
{
    m_impl->workDir = directory;
}

void TavikResultData::AddTransmission(Transmission* transmission)
{
    if (!transmission || transmission->m_content->isOwned)
        return;
    transmission->m_content->isOwned = true;
    transmission->m_content->isKept = m_impl->policy.isKept;
    for (const auto& block : transmission->m_content->blocks)
        block->isKept = m_impl->policy.isKept;
    Impl::Held item;
    item.transmission.reset(transmission);
    item.content = transmission->m_content;
    m_impl->held.push_back(std::move(item));
}

bool TavikResultData::SaveFile(const QString& fileName)
{
    if (!m_impl->policy.isKept)
        return true;
    const QString path = m_impl->PathOf(fileName);
    m_impl->Demand(path);
    m_impl->WriteKept(MOST_FAILURES);
    m_impl->WriteHeld(path);
    m_impl->Report();
    return m_impl->IsNothingOwed();
}

void TavikResultData::Reset()
{
    m_impl->Release();
}

} // namespace TavikResultDataXml
