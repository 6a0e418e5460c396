// SPDX-License-Identifier: MIT
#include "host/trace.h"

#include "host/standin/printf.h"
#include "host/standin/tracelog.h"

#include <QStringList>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <vector>

namespace {

void writeToStandardError(const QString& message, const QString& sourceFile, int line)
{
    QString text = message;
    text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    if (!sourceFile.isEmpty())
        text.prepend(QStringLiteral("%1(%2): ").arg(sourceFile).arg(line));
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

struct TraceLog
{
    std::atomic<unsigned int> mask{0};
    std::recursive_mutex mutex; ///< held while the sink runs, which may trace itself
    std::shared_ptr<TraceSink> sink = std::make_shared<TraceSink>();
};

/// Never destroyed, since destructors of other statics may trace.
TraceLog& traceLog()
{
    static auto* const log = new TraceLog;
    return *log;
}

void write(const QString& message, const QString& sourceFile, int line)
{
    TraceLog& log = traceLog();
    const std::lock_guard<std::recursive_mutex> lock(log.mutex);
    const std::shared_ptr<TraceSink> sink = log.sink;
    if (*sink)
        (*sink)(message, sourceFile, line);
    else
        writeToStandardError(message, sourceFile, line);
}

class MaskedErrorHandler : public ErrorHandler
{
public:
    unsigned int GetTraceMask() override { return traceMask(); }
};

} // namespace

ErrorHandler::~ErrorHandler() = default;

ErrorHandler& ErrorHandler::Instance()
{
    static auto* const handler = new MaskedErrorHandler;
    return *handler;
}

void _Q_Trace(const QString& message, const QString& sourceFile, unsigned short line)
{
    write(message, sourceFile, line);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the host's interface has it by value
void _Q_TraceOld(QString format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString message = formatPrintf(format, arguments);
    va_end(arguments);
    write(message, QString(), 0);
}

unsigned int traceMask()
{
    return traceLog().mask.load(std::memory_order_relaxed);
}

void setTraceMask(unsigned int mask)
{
    traceLog().mask.store(mask, std::memory_order_relaxed);
}

TraceSink setTraceSink(TraceSink sink)
{
    TraceLog& log = traceLog();
    const std::lock_guard<std::recursive_mutex> lock(log.mutex);
    const auto before = std::exchange(log.sink, std::make_shared<TraceSink>(std::move(sink)));
    return *before;
}

class TraceRecorder::Store
{
public:
    mutable std::mutex mutex;
    /// Not shared implicitly: what a reader has let go of, Qt looks at without an acquiring load.
    std::vector<Trace> traces;
};

TraceRecorder::TraceRecorder()
    : m_store(std::make_shared<Store>())
    , m_maskBefore(traceMask())
{
    const auto store = m_store;
    // cppcheck-suppress useInitializationList; the new sink needs its store first
    m_sinkBefore =
        setTraceSink([store](const QString& message, const QString& sourceFile, int line) {
            const std::lock_guard<std::mutex> lock(store->mutex);
            store->traces.push_back({message, sourceFile, line});
        });
    setTraceMask(m_maskBefore | PLUGIN_TRACE_CLASS);
}

TraceRecorder::~TraceRecorder()
{
    setTraceMask(m_maskBefore);
    setTraceSink(m_sinkBefore);
}

QVector<TraceRecorder::Trace> TraceRecorder::Traces() const
{
    const std::lock_guard<std::mutex> lock(m_store->mutex);
    return {m_store->traces.cbegin(), m_store->traces.cend()};
}

QStringList TraceRecorder::Messages() const
{
    const QVector<Trace> traces = Traces();
    QStringList messages;
    for (const Trace& trace : traces)
        messages.append(trace.message);
    return messages;
}

void TraceRecorder::Clear()
{
    const std::lock_guard<std::mutex> lock(m_store->mutex);
    m_store->traces.clear();
}
