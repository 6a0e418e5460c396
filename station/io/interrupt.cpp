// SPDX-License-Identifier: MIT
#include "station/io/interrupt.h"

#include <csignal>

namespace morsehost {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void note(int /*signal*/)
{
    interrupted = 1;
}

} // namespace

void noteInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = note; // no SA_RESTART: a blocking read is to return
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    sigaction(SIGPIPE, &ignore, nullptr);
    sigaction(SIGXFSZ, &ignore, nullptr);
}

bool isInterrupted()
{
    return interrupted != 0;
}

} // namespace morsehost
