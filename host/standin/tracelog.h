// SPDX-License-Identifier: MIT
// Where the traces of the stand-in host go. Safe for use from several threads.
#pragma once

#include "host/hostapi.h"
#include "host/trace.h"

#include <QString>
#include <QVector>

#include <functional>
#include <memory>

/// Takes one trace. Calls are never concurrent; a sink may trace and may be replaced by itself.
using TraceSink = std::function<void(const QString& message, const QString& sourceFile, int line)>;

/// The mask that `ErrorHandler::GetTraceMask` returns; 0 at the start.
HOST_API unsigned int traceMask();
HOST_API void setTraceMask(unsigned int mask);

/// Replaces the sink and returns the one before it, which is not called any more from then on. An
/// empty one stands for the default: one line per trace on standard error.
HOST_API TraceSink setTraceSink(TraceSink sink);

/// While it lives, the plug-in's traces are switched on and collected here instead of written.
/// Recorders end in the opposite order of their beginning.
class HOST_API TraceRecorder
{
public:
    /// One trace, as it was given.
    struct Trace
    {
        QString message;    ///< the text
        QString sourceFile; ///< as given to `_Q_Trace`; empty from `_Q_TraceOld`
        int line;           ///< likewise; 0 from `_Q_TraceOld`
    };

    TraceRecorder();
    ~TraceRecorder();

    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    /// All since the beginning or the last `Clear`, in their order.
    QVector<Trace> Traces() const;
    /// Their texts alone.
    QStringList Messages() const;
    /// Forgets them.
    void Clear();

private:
    class Store;
    std::shared_ptr<Store> m_store;
    unsigned int m_maskBefore;
    TraceSink m_sinkBefore;
};
