/* SPDX-License-Identifier: MIT
 * Stands in for PulseAudio's client library, so that a program that only listens to a sound card
 * can be given a recording, faster than it was made. The recording named by SOUND_FILE (WAV, 16
 * bit, mono, at the rate that the program asks for) plays once the file SOUND_GO exists; when it is
 * over the file SOUND_DONE is made. */
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

enum { FLOAT32LE = 5, WAVE_HEADER = 44, TIMES_REAL_TIME = 40, SILENCE_s = 4 };

struct SampleSpec
{
    int format;
    uint32_t rate;
    uint8_t channels;
};

struct pa_simple
{
    struct SampleSpec spec;
    FILE* file;
    uint64_t silence; /* frames since its end */
    int done;
};

struct pa_simple* pa_simple_new(const char* server, const char* name, int direction,
                                const char* device, const char* stream,
                                const struct SampleSpec* spec, const void* map,
                                const void* buffers, int* error)
{
    (void)server, (void)name, (void)direction, (void)device, (void)stream;
    (void)map, (void)buffers, (void)error;
    struct pa_simple* simple = calloc(1, sizeof *simple);
    if (simple != NULL)
        simple->spec = *spec;
    return simple;
}

void pa_simple_free(struct pa_simple* simple)
{
    if (simple->file != NULL)
        fclose(simple->file);
    free(simple);
}

int pa_simple_read(struct pa_simple* simple, void* data, size_t bytes, int* error)
{
    (void)error;
    const int isFloat = simple->spec.format == FLOAT32LE;
    const size_t channels = simple->spec.channels;
    const size_t frames = bytes / channels / (isFloat ? sizeof(float) : sizeof(int16_t));
    if (simple->file == NULL && access(getenv("SOUND_GO"), R_OK) == 0) {
        simple->file = fopen(getenv("SOUND_FILE"), "rb");
        if (simple->file == NULL || fseek(simple->file, WAVE_HEADER, SEEK_SET) != 0)
            return -1;
    }
    for (size_t i = 0; i < frames; ++i) {
        int16_t value = 0;
        if (simple->file != NULL && fread(&value, sizeof value, 1, simple->file) != 1) {
            value = 0;
            ++simple->silence;
        }
        for (size_t channel = 0; channel < channels; ++channel) {
            if (isFloat)
                ((float*)data)[i * channels + channel] = (float)value / 32768.0F;
            else
                ((int16_t*)data)[i * channels + channel] = value;
        }
    }
    if (!simple->done && simple->silence > (uint64_t)SILENCE_s * simple->spec.rate) {
        simple->done = 1;
        close(open(getenv("SOUND_DONE"), O_CREAT | O_WRONLY, 0600));
    }
    const int playing = simple->file != NULL && !simple->done;
    usleep((useconds_t)(1000000.0 * (double)frames / simple->spec.rate /
                        (playing ? TIMES_REAL_TIME : 1)));
    return 0;
}

int pa_simple_write(struct pa_simple* simple, const void* data, size_t bytes, int* error)
{
    (void)simple, (void)data, (void)bytes, (void)error;
    return 0;
}

int pa_simple_drain(struct pa_simple* simple, int* error)
{
    (void)simple, (void)error;
    return 0;
}

int pa_simple_flush(struct pa_simple* simple, int* error)
{
    (void)simple, (void)error;
    return 0;
}

uint64_t pa_simple_get_latency(struct pa_simple* simple, int* error)
{
    (void)simple, (void)error;
    return 0;
}
