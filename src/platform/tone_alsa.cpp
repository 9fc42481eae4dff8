// A sine tone on the default ALSA device. Without a sound device, or without the ALSA library,
// or with ALSA refusing, it is silent: a failure beep must never become a failure of its own.
//
// The library is opened on the first tone rather than linked: most sessions never sound one, and
// linked it would be loaded, relocated and partly resident from the start.
#include "platform/platform.h"

#include <QLibrary>
#include <alsa/asoundlib.h>
#include <cmath>
#include <vector>

namespace platform {
namespace {

void quiet(const char*, int, const char*, int, const char*, ...) {}  // ALSA's messages would go to stderr

// The few entries of the library that a tone needs; all null when it cannot be loaded.
struct Alsa {
    decltype(&snd_lib_error_set_handler) setErrorHandler = nullptr;
    decltype(&snd_pcm_open) open = nullptr;
    decltype(&snd_pcm_nonblock) nonblock = nullptr;
    decltype(&snd_pcm_set_params) setParams = nullptr;
    decltype(&snd_pcm_writei) writei = nullptr;
    decltype(&snd_pcm_drain) drain = nullptr;
    decltype(&snd_pcm_close) close = nullptr;

    bool complete() const { return setErrorHandler && open && nonblock && setParams && writei && drain && close; }
};

template <typename Function>
void resolve(QLibrary& library, const char* name, Function& to) {
    to = reinterpret_cast<Function>(library.resolve(name));
}

// Loaded once for the process (tones may come from more than one thread) and never unloaded.
const Alsa* LoadedAlsa() {
    static const Alsa alsa = [] {
        static QLibrary library(QStringLiteral("asound"), 2);
        Alsa a;
        if (!library.load()) return a;
        resolve(library, "snd_lib_error_set_handler", a.setErrorHandler);
        resolve(library, "snd_pcm_open", a.open);
        resolve(library, "snd_pcm_nonblock", a.nonblock);
        resolve(library, "snd_pcm_set_params", a.setParams);
        resolve(library, "snd_pcm_writei", a.writei);
        resolve(library, "snd_pcm_drain", a.drain);
        resolve(library, "snd_pcm_close", a.close);
        if (a.complete()) a.setErrorHandler(quiet);
        return a;
    }();
    return alsa.complete() ? &alsa : nullptr;
}

}  // namespace

bool PlayTone(int hz, int ms) {
    if (hz <= 0 || ms <= 0 || ms > 10000) return false;
    const Alsa* alsa = LoadedAlsa();
    if (!alsa) return false;
    snd_pcm_t* pcm = nullptr;
    if (alsa->open(&pcm, "default", SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK) < 0) return false;
    constexpr unsigned kRate = 22050;
    bool played = false;
    if (alsa->nonblock(pcm, 0) == 0 &&
        alsa->setParams(pcm, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 1, kRate, 1, 200000) == 0) {
        const size_t frames = kRate * static_cast<size_t>(ms) / 1000;
        std::vector<int16_t> samples(frames);
        for (size_t i = 0; i < frames; ++i) {
            // A short fade at both ends keeps the tone from clicking.
            const double edge = std::min(1.0, std::min(i, frames - i) / (kRate * 0.005));
            samples[i] = static_cast<int16_t>(9000 * edge * std::sin(2 * M_PI * hz * static_cast<double>(i) / kRate));
        }
        played = alsa->writei(pcm, samples.data(), frames) > 0 && alsa->drain(pcm) == 0;
    }
    alsa->close(pcm);
    return played;
}

}  // namespace platform
