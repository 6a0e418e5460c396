// SPDX-License-Identifier: MIT
// The host's result report library: a document of transmissions, each with blocks of frames.
#pragma once

#include "host/hostapi.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <vector>

namespace TavikResultDataXml {

// Of the report format, for its writers and readers.
constexpr char VERSION_ATTRIBUTE[] = "Version";
constexpr char DATE_TIME_FORMAT[] = "yyyy-MM-ddThh:mm:ss,zzzZ";
constexpr char TIME_FORMAT[] = "hh:mm:ss,zzz";

struct BlockContent;
struct TransmissionContent;

/// A run of frames: pieces of text, each with the time of the signal that it came from.
class HOST_API DataBlock
{
public:
    /// The three numbers of the block: channel (-1 for none), format and flags.
    DataBlock(int channel, int format, int flags);
    ~DataBlock();

    DataBlock(const DataBlock&) = delete;
    DataBlock& operator=(const DataBlock&) = delete;

    /// Between `BeginFrame` and `EndFrame` one frame is filled; outside, the setters do nothing.
    /// Beginning a frame ends the one before. A frame that is saved unended counts as it stands.
    void BeginFrame();
    /// Microseconds since 1970-01-01 00:00 UTC; 0 for a frame without.
    void SetTimeStamp(unsigned long long timestamp_us);
    /// Adds to the text of the frame.
    void AppendData(const QString& text);
    /// Ends the frame, if one has begun.
    void EndFrame();

private:
    friend class Transmission;
    std::shared_ptr<BlockContent> m_content;
};

/// One stretch of reception.
class HOST_API Transmission
{
public:
    Transmission();
    ~Transmission();

    Transmission(const Transmission&) = delete;
    Transmission& operator=(const Transmission&) = delete;

    /// Time of the first signal; any time zone. An invalid one is none.
    void SetStartTime(const QDateTime& time);
    /// Time of the latest signal so far, likewise.
    void SetStopTime(const QDateTime& time);
    /// Takes the block over. Null, or a block that was added before, is ignored.
    void AddDataBlock(DataBlock* block);

private:
    friend class TavikResultData;
    std::shared_ptr<TransmissionContent> m_content;
    std::vector<std::unique_ptr<DataBlock>> m_blocks;
};

/// The document: what it holds is added to a file by `SaveFile` and given up by `Reset`.
///
/// What a save was asked to write and could not is kept, also after `Reset`. Every later save and
/// the destructor try again, under the name that it was to have. At most 64 MiB are kept over a
/// `Reset`; beyond that the oldest transmissions go first, with a trace.
class HOST_API TavikResultData
{
public:
    TavikResultData();
    virtual ~TavikResultData();

    TavikResultData(const TavikResultData&) = delete;
    TavikResultData& operator=(const TavikResultData&) = delete;

    /// The folder of a file name that names no folder.
    void SetWorkDir(const QString& directory);
    /// Takes the transmission over. Null, or one that was added before, is ignored.
    void AddTransmission(Transmission* transmission);
    /// Adds the transmissions that the file does not have yet to the file, which is created when
    /// there is none; a file of that name that is no result document is left alone, and the next
    /// free name taken ("name_2.xml"). A reader sees the file as it was or as it is afterwards.
    ///
    /// True when nothing is left that ought to be on disk. So a document without transmissions
    /// gives true and writes no file: there is nothing that anybody could miss. An empty name is
    /// none that can be written to; what there is waits for the name of the next save.
    bool SaveFile(const QString& fileName);
    /// Empties the document of its transmissions; pointers to them are void from then on. One that
    /// was never to be saved is forgotten.
    virtual void Reset();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace TavikResultDataXml
