#pragma once
/// Small pictures and sounds through every effect, and a hash of what comes out: how each is made, so that
/// all who hold results against each other (other compilers, processors, programs) do it on the same.
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "aveffect/catalogue.h"
#include "tests/support/host_frame.h"
#include "tests/support/host_sound.h"

namespace ledger {

/// A name and the text that it is set to, in the order in which they are set.
using Settings = std::vector<std::pair<std::string, std::string>>;

/// What every case has: an effect with settings.
struct Subject {
    const AVBased::EffectInfo* effect = nullptr;
    std::string spoken; ///< the effect and its settings as people write them
    Settings settings;  ///< the same as the plug-in has them, without "duration"

    /// What a property is set to, else what it starts with.
    std::string Text(const std::string& property) const;
    int Int(const std::string& property) const;
    double Number(const std::string& property) const;
};

/// A picture through an effect.
struct PictureCase : Subject {
    unsigned format = 0, width = 0, height = 0;
    int time = 0;       ///< of kSpanMs
    bool again = false; ///< the second picture that a processor has, which another one came before
    bool right = false; ///< the frame has a second view

    /// How it is found in the ledger: what, format and size.
    std::string Key() const;
};

/// Some pieces of sound through an effect, one after the other.
struct SoundCase : Subject {
    test::SoundShape shape;

    std::string Key() const;
};

constexpr int kSpanMs = 1000;   ///< the effects' "duration"
constexpr unsigned kSeed = 1;   ///< of random numbers, before the first picture; the program's
constexpr unsigned kPieces = 3; ///< of sound
constexpr unsigned kPieceSamples = 1000, kSoundRate = 48000;

std::vector<PictureCase> PictureCases();
std::vector<SoundCase> SoundCases();

/// The picture of that number, in that format and size, rows without padding; chroma of odd sides as the
/// frame table has it.
test::FramePtr MakePicture(unsigned format, unsigned width, unsigned height, unsigned number);
/// What goes into the case's effect: picture 1, 2 is that of a second view and the one that transitions go
/// to, 3 the one that comes before.
test::FramePtr Input(const PictureCase& of);
test::HostSound Input(const SoundCase& of, unsigned piece);

/// MD5 of the picture's bytes, plane by plane, without what lies between rows: what FFmpeg's framemd5 has.
std::string HashOf(test::HostFrame& frame);
std::string HashOf(std::vector<test::HostSound>& sounds);

/// What the plug-in makes of a case, as its hash. Throws std::runtime_error where it fails.
std::string Made(const PictureCase& of);
std::string Made(const SoundCase& of);

/// Hashes by key. Throws std::runtime_error for a file that is none.
std::map<std::string, std::string> Read(const std::string& path);

} // namespace ledger
