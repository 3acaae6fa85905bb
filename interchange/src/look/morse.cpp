#include "morse.h"

#include <quillon/flttext.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace interchange {

namespace {

struct Sign {
    char character;
    std::string_view code;
};

// Recommendation ITU-R M.1677, but for accents.
constexpr Sign kSigns[] = {
    {'A', ".-"},      {'B', "-..."},   {'C', "-.-."},   {'D', "-.."},    {'E', "."},
    {'F', "..-."},    {'G', "--."},    {'H', "...."},   {'I', ".."},     {'J', ".---"},
    {'K', "-.-"},     {'L', ".-.."},   {'M', "--"},     {'N', "-."},     {'O', "---"},
    {'P', ".--."},    {'Q', "--.-"},   {'R', ".-."},    {'S', "..."},    {'T', "-"},
    {'U', "..-"},     {'V', "...-"},   {'W', ".--"},    {'X', "-..-"},   {'Y', "-.--"},
    {'Z', "--.."},    {'1', ".----"},  {'2', "..---"},  {'3', "...--"},  {'4', "....-"},
    {'5', "....."},   {'6', "-...."},  {'7', "--..."},  {'8', "---.."},  {'9', "----."},
    {'0', "-----"},   {'.', ".-.-.-"}, {',', "--..--"}, {':', "---..."}, {'?', "..--.."},
    {'\'', ".----."}, {'-', "-....-"}, {'/', "-..-."},  {'(', "-.--."},  {')', "-.--.-"},
    {'"', ".-..-."},  {'=', "-...-"},  {'+', ".-.-."},  {'@', ".--.-."}};

std::string_view codeOf(char character) {
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
    const auto* const sign = std::ranges::find(kSigns, character, &Sign::character);
    return sign == std::end(kSigns) ? std::string_view() : sign->code;
}

/// In seconds.
struct Timing {
    double dot;
    double pause;  ///< a third of that between letters, a seventh of that between words
};

Timing timingOf(const FltLightPointAnimation& animation) {
    constexpr double kDotsOfWord = 50, kPausesOfWord = 19, kBeaconRate = 8;
    const auto dotAt = [](double rate) { return 60 / (kDotsOfWord * rate); };
    const double characterRate = animation.characterRate;
    double rate = animation.wordRate > 0 ? animation.wordRate : characterRate;
    if (!(rate > 0)) rate = kBeaconRate;
    const bool isFaster =
        animation.morseTiming == FltLightPointAnimation::kFarnsworth && characterRate > rate;
    if (!isFaster) return {dotAt(rate), dotAt(rate)};
    // Characters are faster than words, so the pauses have what is left of a word's time.
    const double dot = dotAt(characterRate);
    return {dot, (60 / rate - (kDotsOfWord - kPausesOfWord) * dot) / kPausesOfWord};
}

}  // namespace

std::vector<LightPointStep> morseStepsOf(const FltLightPointAnimation& animation) {
    const Timing timing = timingOf(animation);
    const double betweenLetters = 3 * timing.pause, betweenWords = 7 * timing.pause;
    std::vector<LightPointStep> steps;
    const auto add = [&](double seconds, bool isOn) {
        steps.push_back({static_cast<float>(seconds), isOn, {}});
    };
    double pause = 0;  // before the next letter
    for (const char character : fltText(animation.morseText)) {
        const std::string_view code = codeOf(character);
        if (code.empty()) {
            if (!steps.empty()) pause = betweenWords;
            continue;
        }
        for (const char mark : code) {
            if (pause > 0) add(pause, false);
            add(mark == '-' ? 3 * timing.dot : timing.dot, true);
            pause = timing.dot;
        }
        pause = betweenLetters;
    }
    if (!steps.empty()) add(betweenWords, false);
    return steps;
}

}  // namespace interchange
