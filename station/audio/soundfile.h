// SPDX-License-Identifier: MIT
// An open recording of libsndfile, closed with the last that holds it.
#pragma once

#include <sndfile.h>

#include <memory>

namespace morsehost {

struct CloseSound
{
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSound>;

} // namespace morsehost
