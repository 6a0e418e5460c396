// SPDX-License-Identifier: MIT
// Keeps the result document of one Morse session handler.
// Used inside the library only, the header is not installed; yet the order of its fields is binary
// interface, since hosts share the class.
#pragma once

#include <QObject>
#include <QString>

namespace TavikResultDataXml {
class DataBlock;
class TavikResultData;
class Transmission;
} // namespace TavikResultDataXml

/// One transmission per stretch of reception, with one data block whose frames are the decoded
/// characters. A transmission opens with the first time stamp after construction or after a save.
class TavikResultDataHandler : public QObject
{
    Q_OBJECT

public:
    /// The application's name is accepted for the host's sake; the document does not carry it.
    TavikResultDataHandler(QObject* parent, const QString& applicationName);
    ~TavikResultDataHandler() override;

    void SetWorkDir(const QString& directory);
    /// Microseconds since 1970-01-01 00:00 UTC. Opens a transmission where none is open: names
    /// its file, announces the name and asks for the receiver's settings. Moves its stop time
    /// otherwise.
    void SetTimestamp(unsigned long long timestamp);
    /// One frame with the time of the latest time stamp; skipped while no block is open.
    void AppendText(const QString& text);
    /// Saves the document under the name of the transmission and closes that.
    void SaveFile();

    // The document has no place for these yet.
    void SetBaudrate(double baudrate);
    void SetFrequencyOffset(double offset_Hz);
    void SetFrequency(double frequency_Hz);
    void SetTunerDemodulatorSettings(const QString& settings);

protected:
    // Marked one by one: the keyword for a section would make them public.
    Q_SIGNAL void SetFilename(QString sFilename);
    Q_SIGNAL void GetXmlTunerDemodulatorSettings();

private:
    // The order of the fields is binary interface.
    TavikResultDataXml::TavikResultData* m_pResultData;
    TavikResultDataXml::Transmission* m_pTransmission = nullptr; ///< the document's
    TavikResultDataXml::DataBlock* m_pDataBlock = nullptr;       ///< the transmission's
    QString m_strFilename;
    unsigned long long m_nLastTimestamp = 0;
    QString m_strWorkDir;
};
