// SPDX-License-Identifier: MIT
#include "session/tavikresultdatahandler.h"

#include "host/resultdata.h"

#include <QDateTime>

using TavikResultDataXml::DataBlock;
using TavikResultDataXml::TavikResultData;
using TavikResultDataXml::Transmission;

namespace {

// Whole seconds are 32 bits wide in the document; what is below a millisecond is dropped.
QDateTime toDateTime(unsigned long long timestamp_us)
{
    const auto seconds = static_cast<quint32>(timestamp_us / 1000000);
    const auto milliseconds = static_cast<qint64>((timestamp_us / 1000) % 1000);
    return QDateTime::fromSecsSinceEpoch(seconds).addMSecs(milliseconds).toUTC();
}

} // namespace

TavikResultDataHandler::TavikResultDataHandler(QObject* parent, const QString& applicationName)
    : QObject(parent)
    , m_pResultData(new TavikResultData)
{
    Q_UNUSED(applicationName)
}

TavikResultDataHandler::~TavikResultDataHandler()
{
    delete m_pResultData;
}

void TavikResultDataHandler::SetWorkDir(const QString& directory)
{
    m_strWorkDir = directory;
    m_pResultData->SetWorkDir(directory);
}

void TavikResultDataHandler::SetTimestamp(unsigned long long timestamp)
{
    const QDateTime time = toDateTime(timestamp);
    if (!m_pTransmission) {
        auto* const transmission = new Transmission;
        m_pTransmission = transmission;
        transmission->SetStartTime(time);
        m_pResultData->AddTransmission(transmission);
        m_strFilename =
            m_strWorkDir + QStringLiteral("/TavikResultData_") +
            QDateTime::currentDateTime().toString(QStringLiteral("yyyy_MM_dd__hh_mm_ss")) +
            QStringLiteral(".xml");
        Q_EMIT SetFilename(m_strFilename);
        Q_EMIT GetXmlTunerDemodulatorSettings();
        // The host may have saved in answer to either, which closes the transmission.
        if (m_pTransmission == transmission && !m_pDataBlock) {
            m_pDataBlock = new DataBlock(-1, 0, 0);
            transmission->AddDataBlock(m_pDataBlock);
        }
    } else {
        m_pTransmission->SetStopTime(time);
    }
    m_nLastTimestamp = timestamp;
}

void TavikResultDataHandler::AppendText(const QString& text)
{
    if (!m_pDataBlock)
        return;
    m_pDataBlock->BeginFrame();
    m_pDataBlock->SetTimeStamp(m_nLastTimestamp);
    m_pDataBlock->AppendData(text);
    m_pDataBlock->EndFrame();
}

void TavikResultDataHandler::SaveFile()
{
    m_pResultData->SaveFile(m_strFilename);
    m_pResultData->Reset();
    m_pTransmission = nullptr;
    m_pDataBlock = nullptr;
}

void TavikResultDataHandler::SetBaudrate(double baudrate)
{
    Q_UNUSED(baudrate)
}

void TavikResultDataHandler::SetFrequencyOffset(double offset_Hz)
{
    Q_UNUSED(offset_Hz)
}

void TavikResultDataHandler::SetFrequency(double frequency_Hz)
{
    Q_UNUSED(frequency_Hz)
}

void TavikResultDataHandler::SetTunerDemodulatorSettings(const QString& settings)
{
    Q_UNUSED(settings)
}
