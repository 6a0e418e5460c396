// SPDX-License-Identifier: MIT
// The host's error handler and its two trace functions.
#pragma once

#include "host/hostapi.h"

#include <QString>

/// The class of traces that the plug-in's messages belong to.
constexpr unsigned int PLUGIN_TRACE_CLASS = 0x20;

/// Knows which traces are wanted. Asked on any thread that works with the library.
class HOST_API ErrorHandler
{
public:
    /// The process-wide one, which exists from the first call to the end of the process.
    static ErrorHandler& Instance();

    virtual ~ErrorHandler();

    /// The classes of traces that are switched on, one bit each.
    virtual unsigned int GetTraceMask() = 0;

protected:
    ErrorHandler() = default;
    ErrorHandler(const ErrorHandler&) = delete;
    ErrorHandler& operator=(const ErrorHandler&) = delete;
};

/// Writes one trace line whatever the mask says; the caller has asked it.
/// `sourceFile` names the source, with backslashes and without extension:
/// "tools\morsehandler\morsehandler".
HOST_API void _Q_Trace(const QString& message, const QString& sourceFile, unsigned short line);

/// A trace with placeholders as in printf, "%s" taking a `const char*` in UTF-8; without a source.
HOST_API void _Q_TraceOld(QString format, ...);

/// Whether the plug-in's traces are wanted.
inline bool isTraceWanted()
{
    return (ErrorHandler::Instance().GetTraceMask() & PLUGIN_TRACE_CLASS) != 0;
}

/// Traces when the plug-in's traces are wanted.
inline void traceMessage(const QString& message, const QString& sourceFile, unsigned short line)
{
    if (isTraceWanted())
        _Q_Trace(message, sourceFile, line);
}
