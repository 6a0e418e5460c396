// SPDX-License-Identifier: MIT
// The host's result report library: a document of transmissions, each with blocks of frames.
#pragma once

#include "host/hostapi.h"

#include <QDateTime>
#include <QString>

#include <memory>

namespace TavikResultDataXml {

// Of the report format, for whoever writes or reads it.
constexpr char VERSION_ATTRIBUTE[] = "Version";
constexpr char DATE_TIME_FORMAT[] = "yyyy-MM-ddThh:mm:ss,zzzZ";
constexpr char TIME_FORMAT[] = "hh:mm:ss,zzz";

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
    void BeginFrame();
    /// Microseconds since 1970-01-01 00:00 UTC.
    void SetTimeStamp(unsigned long long timestamp_us);
    void AppendData(const QString& text);
    void EndFrame();

private:
    friend class TavikResultData;
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

/// One stretch of reception.
class HOST_API Transmission
{
public:
    Transmission();
    ~Transmission();

    Transmission(const Transmission&) = delete;
    Transmission& operator=(const Transmission&) = delete;

    void SetStartTime(const QDateTime& time);
    void SetStopTime(const QDateTime& time);
    /// Takes the block over. Null, or a block that was added before, is ignored.
    void AddDataBlock(DataBlock* block);

private:
    friend class TavikResultData;
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

/// The document.
class HOST_API TavikResultData
{
public:
    TavikResultData();
    virtual ~TavikResultData();

    TavikResultData(const TavikResultData&) = delete;
    TavikResultData& operator=(const TavikResultData&) = delete;

    /// The folder that a relative file name counts from.
    void SetWorkDir(const QString& directory);
    /// Takes the transmission over. Null, or one that was added before, is ignored.
    void AddTransmission(Transmission* transmission);
    /// Writes the document to the file; false when it could not be written.
    bool SaveFile(const QString& fileName);
    /// Empties the document of its transmissions, deleting them.
    virtual void Reset();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace TavikResultDataXml
