// SPDX-License-Identifier: MIT
#include "station/io/interrupt.h"

#include <atomic>
#include <csignal>

namespace morsehost {

namespace {

// Set by a signal, read by every thread that waits.
std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void note(int /*signal*/)
{
    interrupted = true;
}

} // namespace

void noteInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = note; // no SA_RESTART: a blocking read is to return
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        // Who starts a program with a signal ignored (nohup) wants it so.
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    sigaction(SIGPIPE, &ignore, nullptr);
    sigaction(SIGXFSZ, &ignore, nullptr);
}

bool isInterrupted()
{
    return interrupted;
}

} // namespace morsehost
