// SPDX-License-Identifier: MIT
// SIGHUP, SIGINT and SIGTERM end the input early, so that files and documents are completed first.
#pragma once

namespace morsehost {

/// From now on these signals are noted instead of ending the process, and a reader that has gone
/// away or a file that may not grow is an error of the write instead of a signal. Blocking reads
/// return.
void noteInterrupts();

bool isInterrupted();

} // namespace morsehost
