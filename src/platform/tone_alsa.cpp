// A sine tone on the default ALSA device. Without a sound device (or with ALSA refusing) it is
// silent: a failure beep must never become a failure of its own.
#include "platform/platform.h"

#include <alsa/asoundlib.h>
#include <cmath>
#include <vector>

namespace platform {
namespace {
void quiet(const char*, int, const char*, int, const char*, ...) {}  // ALSA's messages would go to stderr
}  // namespace

bool PlayTone(int hz, int ms) {
    if (hz <= 0 || ms <= 0 || ms > 10000) return false;
    snd_lib_error_set_handler(quiet);
    snd_pcm_t* pcm = nullptr;
    if (snd_pcm_open(&pcm, "default", SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK) < 0) return false;
    constexpr unsigned kRate = 22050;
    bool played = false;
    if (snd_pcm_nonblock(pcm, 0) == 0 &&
        snd_pcm_set_params(pcm, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 1, kRate, 1, 200000) == 0) {
        const size_t frames = kRate * static_cast<size_t>(ms) / 1000;
        std::vector<int16_t> samples(frames);
        for (size_t i = 0; i < frames; ++i) {
            // A short fade at both ends keeps the tone from clicking.
            const double edge = std::min(1.0, std::min(i, frames - i) / (kRate * 0.005));
            samples[i] = static_cast<int16_t>(9000 * edge * std::sin(2 * M_PI * hz * static_cast<double>(i) / kRate));
        }
        played = snd_pcm_writei(pcm, samples.data(), frames) > 0 && snd_pcm_drain(pcm) == 0;
    }
    snd_pcm_close(pcm);
    return played;
}

}  // namespace platform
