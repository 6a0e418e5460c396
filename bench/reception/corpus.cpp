// SPDX-License-Identifier: MIT
#include "reception/corpus.h"

#include "support/othersounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace reception {

using testsupport::Hand;
using testsupport::Neighbour;
using testsupport::Path;
using testsupport::Random;

namespace {

const char* const WORDS[] = {
    "THE",      "OF",      "AND",     "TO",       "IN",       "A",      "IS",     "THAT",
    "FOR",      "IT",      "WAS",     "ON",       "ARE",      "AS",     "WITH",   "HIS",
    "THEY",     "AT",      "BE",      "THIS",     "FROM",     "HAVE",   "OR",     "BY",
    "ONE",      "HAD",     "NOT",     "BUT",      "WHAT",     "ALL",    "WERE",   "WHEN",
    "WE",       "THERE",   "CAN",     "AN",       "YOUR",     "WHICH",  "THEIR",  "SAID",
    "IF",       "DO",      "WILL",    "EACH",     "ABOUT",    "HOW",    "UP",     "OUT",
    "THEM",     "THEN",    "SHE",     "MANY",     "SOME",     "SO",     "THESE",  "WOULD",
    "OTHER",    "INTO",    "HAS",     "MORE",     "HER",      "TWO",    "LIKE",   "HIM",
    "SEE",      "TIME",    "COULD",   "NO",       "MAKE",     "THAN",   "FIRST",  "BEEN",
    "ITS",      "WHO",     "NOW",     "PEOPLE",   "MY",       "MADE",   "OVER",   "DID",
    "DOWN",     "ONLY",    "WAY",     "FIND",     "USE",      "MAY",    "WATER",  "LONG",
    "LITTLE",   "VERY",    "AFTER",   "WORDS",    "CALLED",   "JUST",   "WHERE",  "MOST",
    "KNOW",     "HARBOUR", "WIND",    "NORTHERN", "SHIP",     "CARGO",  "QUIET",  "JOURNEY",
    "BRIDGE",   "EXAMPLE", "VALLEY",  "ZERO",     "MOUNTAIN", "RIVER",  "SIGNAL", "STATION",
    "OPERATOR", "MESSAGE", "WEATHER", "COAST",    "LIGHT",    "BOX",    "FAMILY", "GARDEN",
    "KITCHEN",  "LAWYER",  "MAJOR",   "NEPHEW",   "OXYGEN",   "PUZZLE",
};

const char* const PREFIXES[] = {"DL", "G",  "F",  "OK", "SP", "OH", "SM", "EA", "I",
                                "PA", "ON", "LZ", "YO", "W",  "K",  "VE", "JA", "UA"};
const char* const NAMES[] = {"HANS", "PETER", "JOHN", "MARIE", "IVAN", "SVEN", "PAOLO", "JAN"};
const char* const TOWNS[] = {"BERLIN", "LEEDS",   "LYON",   "BRNO", "GDANSK", "TURKU",
                             "MALMO",  "SEVILLA", "TORINO", "GENT", "VARNA",  "CLUJ"};
const char* const REPORTS[] = {"599", "5NN", "579", "559", "449", "339", "589"};

template <std::size_t size>
const char* any(const char* const (&list)[size], Random& random)
{
    return list[random.below(size)];
}

std::string callSign(Random& random)
{
    std::string call = any(PREFIXES, random);
    call += static_cast<char>('0' + random.below(10));
    const std::size_t letters = 1 + random.below(3);
    for (std::size_t i = 0; i < letters; ++i)
        call += static_cast<char>('A' + random.below(26));
    return call;
}

std::string number(std::size_t below, Random& random)
{
    return std::to_string(1 + random.below(below));
}

std::string prose(Random& random, std::size_t length)
{
    std::string result;
    while (result.size() < length) {
        const std::size_t words = 4 + random.below(9);
        for (std::size_t i = 0; i < words; ++i) {
            if (i > 0)
                result += i % 5 == 4 && random.below(3) == 0 ? ", " : " ";
            result += any(WORDS, random);
        }
        result += random.below(6) == 0 ? "? " : ". ";
    }
    return result;
}

std::string contact(Random& random, std::size_t length)
{
    std::string result;
    while (result.size() < length) {
        const std::string a = callSign(random);
        const std::string b = callSign(random);
        const std::string report = any(REPORTS, random);
        result += "CQ CQ DE " + a + " " + a + " + K " + a + " DE " + b + " " + b + " KN " + b +
                  " DE " + a + " = GM OM ES TNX FER CALL = UR RST " + report + " " + report +
                  " = NAME " + any(NAMES, random) + " QTH " + any(TOWNS, random) + " = HW? " + b +
                  " DE " + a + " KN R R FB OM = RIG " + number(200, random) + "W ANT DIPOLE " +
                  number(40, random) + "M UP = NR TT" + number(9, random) + " AGE " +
                  number(90, random) + " WX " + (random.below(2) != 0U ? "SUNNY" : "RAIN") +
                  " TEMP " + number(30, random) + "C = 73 TU E E / ";
    }
    return result;
}

std::string groups(Random& random, std::size_t length)
{
    std::string result;
    while (result.size() < length) {
        for (int i = 0; i < 5; ++i) {
            const std::size_t pick = random.below(36);
            result += static_cast<char>(pick < 26 ? 'A' + pick : '0' + (pick - 26));
        }
        result += ' ';
    }
    return result;
}

double between(double least, double most, Random& random)
{
    return least + (most - least) * random.uniform();
}

Neighbour second(Random& random)
{
    return {300.0, -6.0, between(16.0, 28.0, random)};
}

Condition row(const char* name, const char* title, const std::function<void(Hand&, Path&)>& change)
{
    Condition condition;
    condition.name = name;
    condition.title = title;
    condition.path.snr_dB = 20.0;
    change(condition.hand, condition.path);
    return condition;
}

// Tones, hands and paths that do not keep still.
void addUnsteady(std::vector<Condition>& rows)
{
    const auto add = [&](const char* name, const char* title,
                         const std::function<void(Hand&, Path&)>& change) {
        rows.push_back(row(name, title, change));
    };
    const auto wobble = [](double width_Hz) {
        return [width_Hz](Hand&, Path& path) {
            path.wander_Hz = width_Hz;
            path.wanderPeriod_s = 1.0 / 1.3;
        };
    };
    const auto settling = [](double chirp_Hz) {
        return [chirp_Hz](Hand&, Path& path) {
            path.chirp_Hz = chirp_Hz;
            path.chirpSettling_ms = 30.0;
        };
    };
    const auto slow = [](double speed_wpm) {
        return [speed_wpm](Hand& hand, Path&) { hand.speed_wpm = speed_wpm; };
    };
    const auto samePhase = [](double speed_wpm, double snr_dB) {
        return [=](Hand& hand, Path& path) {
            hand.speed_wpm = speed_wpm;
            path.snr_dB = snr_dB;
            path.rise_ms = 0.2;
            path.samePhase = true;
        };
    };
    const auto watterson = [](double spread_Hz, double late_ms) {
        return [=](Hand&, Path& path) {
            path.snr_dB = 15;
            path.scatter_Hz = 0.5 * spread_Hz; // a spread is two deviations
            path.secondPath_ms = late_ms;
        };
    };
    add("wobble5", "tone wobbles 5 Hz to both sides at 1.3 Hz", wobble(5));
    add("wobble15", "tone wobbles 15 Hz to both sides at 1.3 Hz", wobble(15));
    add("settle30", "chirp of 30 Hz that settles with 30 ms", settling(30));
    add("settle120", "chirp of 120 Hz that settles with 30 ms", settling(120));
    add("wpm6", "6 wpm", slow(6));
    add("wpm5", "5 wpm", slow(5));
    add("wpm3", "3 wpm", slow(3));
    add("phase44-3", "every mark from the same phase, hard edges, 44 wpm, +3 dB", samePhase(44, 3));
    add("phase44-5", "every mark from the same phase, hard edges, 44 wpm, +5 dB", samePhase(44, 5));
    add("phase25-0", "every mark from the same phase, hard edges, 25 wpm, 0 dB", samePhase(25, 0));
    add("hf-quiet", "short wave, quiet: two paths 0.5 ms apart, spread 0.1 Hz, +15 dB",
        watterson(0.1, 0.5));
    add("hf-moderate", "short wave, moderate: two paths 1 ms apart, spread 0.5 Hz, +15 dB",
        watterson(0.5, 1.0));
    add("hf-poor", "short wave, poor: two paths 2 ms apart, spread 1 Hz, +15 dB",
        watterson(1.0, 2.0));
    add("flutter", "flutter: two paths 3 ms apart, spread 10 Hz, +15 dB", watterson(10.0, 3.0));
    add("beginner", "beginner: jitter 15 %, gaps and speeds ragged", [](Hand& hand, Path&) {
        hand.speed_wpm = 12;
        hand.jitter_units = 0.15;
        hand.dashJitter_units = 0.4;
        hand.gapSpread = 0.35;
        hand.speedSpread = 0.12;
    });
    add("bug", "bug key: even dots, dashes by hand around 4 units", [](Hand& hand, Path&) {
        hand.dash_units = 4.0;
        hand.dashJitter_units = 0.8;
        hand.gapSpread = 0.15;
    });
    add("jumps", "speed jumps between 14 and 30 wpm every few words", [](Hand& hand, Path&) {
        hand.leastJump_wpm = 14;
        hand.mostJump_wpm = 30;
    });
    add("halves", "speed falls from 24 to 40 wpm to 40 to 60 % of it for a few words, and back",
        [](Hand&, Path&) {});
    rows.back().draw = [](Hand& hand, Path&, Random& random) {
        hand.speed_wpm = between(24, 40, random);
        hand.otherSpeed_wpm = hand.speed_wpm * between(0.4, 0.6, random);
    };
}

// What is heard beside the signal, or taken from it.
void addDisturbed(std::vector<Condition>& rows)
{
    const auto add = [&](const char* name, const char* title,
                         const std::function<void(Hand&, Path&)>& change) {
        rows.push_back(row(name, title, change));
    };
    const auto echo = [](double level_dB) {
        return [level_dB](Hand&, Path& path) {
            path.echo_ms = 130;
            path.echo_dB = level_dB;
        };
    };
    const auto teleprinter = [](double level_dB) {
        return [level_dB](Hand&, Path& path) { path.teleprinter_dB = level_dB; };
    };
    const auto speech = [](double level_dB) {
        return [level_dB](Hand&, Path& path) { path.speech_dB = level_dB; };
    };
    add("echo16", "echo 130 ms late, -16 dB", echo(-16));
    add("echo12", "echo 130 ms late, -12 dB", echo(-12));
    add("echo9", "echo 130 ms late, -9 dB", echo(-9));
    add("echo6", "echo 130 ms late, -6 dB", echo(-6));
    add("echoes", "echo 50 to 280 ms late, -14 to -8 dB", [](Hand&, Path&) {});
    rows.back().draw = [](Hand&, Path& path, Random& random) {
        path.echo_ms = between(50, 280, random);
        path.echo_dB = between(-14, -8, random);
    };
    add("agc", "static crashes, 2 a second, through an automatic gain that recovers in 0.3 s",
        [](Hand&, Path& path) {
            path.static_per_s = 2;
            path.agc_s = 0.3;
        });
    add("holes", "20 ms lost each second, to digital silence",
        [](Hand&, Path& path) { path.holes_per_s = 1; });
    add("fsk", "frequency shift keying, 85 Hz lower in the spaces",
        [](Hand&, Path& path) { path.shift_Hz = 85; });
    add("shifts", "frequency shift keying, 50 to 200 Hz lower in the spaces, 13 to 45 wpm",
        [](Hand&, Path&) {});
    rows.back().draw = [](Hand& hand, Path& path, Random& random) {
        hand.speed_wpm = between(13, 45, random);
        path.shift_Hz = between(50, 200, random);
    };
    add("rtty0", "teleprinter 400 Hz up, as strong", teleprinter(0));
    add("rtty10", "teleprinter 400 Hz up, 10 dB stronger", teleprinter(10));
    add("speech0", "speech, its loud parts as strong", speech(0));
    add("speech10", "speech, its loud parts 10 dB stronger", speech(10));
}

std::vector<Condition> makeConditions()
{
    std::vector<Condition> rows;
    const auto add = [&](const char* name, const char* title,
                         const std::function<void(Hand&, Path&)>& change) {
        rows.push_back(row(name, title, change));
    };
    const auto clean = [](double speed_wpm) {
        return [speed_wpm](Hand& hand, Path& path) {
            hand.speed_wpm = speed_wpm;
            path.snr_dB.reset();
        };
    };
    const auto noisy = [](double speed_wpm, double snr_dB) {
        return [=](Hand& hand, Path& path) {
            hand.speed_wpm = speed_wpm;
            path.snr_dB = snr_dB;
        };
    };
    add("clean12", "clean, 12 wpm", clean(12));
    add("clean20", "clean, 20 wpm", clean(20));
    add("clean30", "clean, 30 wpm", clean(30));
    add("clean40", "clean, 40 wpm", clean(40));
    add("snr10", "+10 dB", noisy(20, 10));
    add("snr6", "+6 dB", noisy(20, 6));
    add("snr3", "+3 dB", noisy(20, 3));
    add("snr0", "0 dB", noisy(20, 0));
    add("snr-3", "-3 dB", noisy(20, -3));
    add("snr-6", "-6 dB", noisy(20, -6));
    add("slow-snr3", "12 wpm, +3 dB", noisy(12, 3));
    add("quick-snr3", "30 wpm, +3 dB", noisy(30, 3));
    add("fast-snr3", "40 wpm, +3 dB", noisy(40, 3));
    add("jitter10", "timing jitter 10 % of a unit",
        [](Hand& hand, Path&) { hand.jitter_units = 0.1; });
    add("jitter20", "timing jitter 20 % of a unit",
        [](Hand& hand, Path&) { hand.jitter_units = 0.2; });
    add("speedup", "speed 15 to 25 wpm over the text", [](Hand& hand, Path&) {
        hand.speed_wpm = 15;
        hand.endSpeed_wpm = 25;
    });
    add("longdash", "dashes of 4 units, 8 % jitter", [](Hand& hand, Path&) {
        hand.dash_units = 4;
        hand.jitter_units = 0.08;
    });
    add("heavy", "marks 0.3 unit long, spaces short",
        [](Hand& hand, Path&) { hand.heavier_units = 0.3; });
    add("widegaps", "character and word gaps doubled", [](Hand& hand, Path&) {
        hand.characterGap_units = 6;
        hand.wordGap_units = 14;
    });
    add("wander", "tone wandering 30 Hz to both sides, period 60 s",
        [](Hand&, Path& path) { path.wander_Hz = 30; });
    add("fading", "fading 10 dB, 0.5 Hz", [](Hand&, Path& path) {
        path.fading_dB = 10;
        path.fading_Hz = 0.5;
    });
    add("quickfading", "fading 10 dB, 1 to 2.5 Hz", [](Hand&, Path& path) { path.fading_dB = 10; });
    rows.back().draw = [](Hand&, Path& path, Random& random) {
        path.fading_Hz = between(1, 2.5, random);
    };
    add("neighbour", "second signal 300 Hz up, 6 dB down", [](Hand&, Path&) {});
    rows.back().draw = [](Hand&, Path& path, Random& random) {
        path.neighbours = {second(random)};
    };
    add("clicks", "clicks, 3 a second, 2 ms, up to 10 dB over the tone",
        [](Hand&, Path& path) { path.clicks_per_s = 3; });
    add("filter-snr3", "through a 500 Hz filter, +3 dB", [](Hand&, Path& path) {
        path.snr_dB = 3;
        path.filter_Hz = 500;
    });
    add("filter-snr0", "through a 500 Hz filter, 0 dB", [](Hand&, Path& path) {
        path.snr_dB = 0;
        path.filter_Hz = 500;
    });
    add("all",
        "all at once: +6 dB, jitter 10 %, fading 6 dB, wander 10 Hz, second signal, 18 to 22 wpm",
        [](Hand& hand, Path& path) {
            hand.jitter_units = 0.1;
            hand.speedSwing_wpm = 2;
            path.snr_dB = 6;
            path.fading_dB = 6;
            path.fading_Hz = 0.5;
            path.wander_Hz = 10;
        });
    rows.back().draw = [](Hand&, Path& path, Random& random) {
        path.neighbours = {second(random)};
    };

    add("chirp", "chirp, 60 Hz at the start of each mark",
        [](Hand&, Path& path) { path.chirp_Hz = 60; });
    add("hardkeying", "key clicks: edges of 0.2 ms", [](Hand&, Path& path) { path.rise_ms = 0.2; });
    add("hum", "mains hum 6 dB over the tone, harmonics through it",
        [](Hand&, Path& path) { path.hum_dB = 6; });
    add("scatter", "Rayleigh fading, spread 0.2 Hz, +15 dB on average", [](Hand&, Path& path) {
        path.snr_dB = 15;
        path.scatter_Hz = 0.2;
    });
    add("crowd", "two more signals, 150 to 500 Hz off, 3 to 12 dB down, 14 to 32 wpm",
        [](Hand&, Path&) {});
    rows.back().draw = [](Hand&, Path& path, Random& random) {
        for (int i = 0; i < 2; ++i) {
            const double offset_Hz = between(150, 500, random) * (random.below(2) != 0U ? 1 : -1);
            path.neighbours.push_back(
                {offset_Hz, -between(3, 12, random), between(14, 32, random)});
        }
    };
    add("static", "static crashes, 2 a second, up to 20 dB over the tone, +10 dB",
        [](Hand&, Path& path) {
            path.snr_dB = 10;
            path.static_per_s = 2;
        });
    add("farnsworth", "characters at 20 wpm, gaps of 9.3 and 21.6 units", [](Hand& hand, Path&) {
        hand.characterGap_units = 9.3;
        hand.wordGap_units = 21.6;
    });
    const auto straightKey = [](double snr_dB) {
        return [snr_dB](Hand& hand, Path& path) {
            hand.dash_units = 3.4;
            hand.jitter_units = 0.18;
            hand.heavier_units = 0.1;
            hand.characterGap_units = 3.4;
            hand.wordGap_units = 6.5;
            path.snr_dB = snr_dB;
        };
    };
    add("fist", "straight key: dashes 3.4, jitter 18 %, gaps 3.4 and 6.5, +10 dB", straightKey(10));
    add("fist0", "the same straight key, 0 dB", straightKey(0));
    add("fist-3", "the same straight key, -3 dB", straightKey(-3));
    add("wpm45", "45 wpm, +10 dB", noisy(45, 10));
    add("wpm8", "8 wpm, +6 dB", noisy(8, 6));
    const auto anySpeed = [](Hand& hand, Path&, Random& random) {
        hand.speed_wpm = between(13, 30, random);
    };
    add("stations",
        "two stations in turn, each at 13 to 30 wpm, 30 to 200 Hz and up to 10 dB apart, +15 dB",
        [](Hand&, Path& path) { path.snr_dB = 15; });
    rows.back().answers = Answers();
    rows.back().draw = anySpeed;
    add("shortovers",
        "two stations in turn, overs of 5 to 40 characters, 25 to 60 Hz apart, +15 dB",
        [](Hand&, Path& path) { path.snr_dB = 15; });
    rows.back().answers = Answers{5, 40, 25.0, 60.0};
    rows.back().draw = anySpeed;
    add("equalovers", "as before, equally strong, 30 to 45 Hz apart",
        [](Hand&, Path& path) { path.snr_dB = 15; });
    rows.back().answers = Answers{5, 40, 30.0, 45.0, 0.0};
    rows.back().draw = anySpeed;
    add("tuneup", "a steady tone of 0.6 to 2.5 s, a pause of 0.4 to 1.5 s, then the text",
        [](Hand&, Path&) {});
    rows.back().draw = [](Hand& hand, Path& path, Random& random) {
        hand.speed_wpm = between(16, 28, random);
        hand.tuning_s = between(0.6, 2.5, random);
        hand.afterTuning_s = between(0.4, 1.5, random);
        path.before_s = between(0.3, 6.0, random);
    };
    addUnsteady(rows);
    addDisturbed(rows);
    return rows;
}

} // namespace

const std::vector<Condition>& conditions()
{
    static const std::vector<Condition> rows = makeConditions();
    return rows;
}

std::vector<std::string> seeds(const std::string& set, std::size_t count)
{
    std::vector<std::string> list;
    for (std::size_t i = 1; i <= count; ++i)
        list.push_back(set + "-" + std::to_string(i));
    return list;
}

const std::vector<std::string>& kinds()
{
    static const std::vector<std::string> list = {"prose", "contact", "groups"};
    return list;
}

std::string text(const std::string& kind, const std::string& seed, std::size_t length)
{
    Random random("text/" + kind + "/" + seed);
    std::string result = kind == "prose"     ? prose(random, length)
                         : kind == "contact" ? contact(random, length)
                                             : groups(random, length);
    result.resize(length);
    while (result.back() == ' ')
        result.back() = 'E';
    return result;
}

namespace {

std::vector<float> twoStations(const Condition& condition, const std::string& sent,
                               const std::string& seed)
{
    std::vector<float> sum;
    const Answers& answers = *condition.answers;
    Random random(seed + "/answer");
    Random lengths(seed + "/overs");
    const double offset_Hz = between(answers.leastOffset_Hz, answers.mostOffset_Hz, random);
    const double answer_wpm = between(13, 30, random);
    const auto level =
        static_cast<float>(std::pow(10.0, -between(0, answers.mostWeaker_dB, random) / 20.0));
    std::size_t begin = 0;
    bool second = false;
    for (int over = 0; begin < sent.size(); ++over) {
        const std::size_t length =
            answers.leastOver + lengths.below(answers.mostOver - answers.leastOver + 1);
        std::size_t end = std::min(sent.size(), begin + length);
        while (end < sent.size() && sent[end] != ' ')
            ++end;
        Hand hand = condition.hand;
        Path path = condition.path;
        path.snr_dB.reset();
        path.before_s = over == 0 ? 1.0 : 0.0;
        path.after_s = between(0.8, 2.5, random);
        if (second) {
            hand.speed_wpm = answer_wpm;
            path.tone_Hz += offset_Hz;
        }
        const std::vector<float> part =
            testsupport::sound(sent.substr(begin, end - begin), hand, path, RATE_Hz,
                               seed + "/" + std::to_string(over));
        for (const float sample : part)
            sum.push_back(second ? sample * level : sample);
        begin = end;
        second = !second;
    }
    testsupport::addNoise(sum, RATE_Hz, 0.9, *condition.path.snr_dB, seed);
    for (float& sample : sum)
        sample *= 0.4F;
    return sum;
}

} // namespace

Recording record(const Condition& condition, const std::string& kind, const std::string& seed,
                 std::size_t length)
{
    Recording recording;
    recording.name = condition.name + "." + kind + "." + seed;
    recording.sent = text(kind, seed, length);
    Condition own = condition;
    Random random(recording.name);
    own.path.tone_Hz = between(500, 900, random);
    if (own.draw)
        own.draw(own.hand, own.path, random);
    recording.tone_Hz = own.path.tone_Hz;
    recording.speed_wpm = own.hand.speed_wpm;
    if (own.answers) {
        recording.samples = twoStations(own, recording.sent, recording.name);
        return recording;
    }
    std::vector<testsupport::Piece> pieces =
        testsupport::keying(recording.sent, own.hand, recording.name);
    if (own.keyDown) {
        double duration_s = 0.0;
        for (const testsupport::Piece& piece : pieces)
            duration_s += piece.duration_s;
        pieces = {{true, duration_s}};
    }
    recording.samples = testsupport::sound(pieces, own.path, RATE_Hz, recording.name);
    return recording;
}

namespace {

// Nobody keys: what the path adds, at the levels of the rows with such a disturbance.
std::vector<float> disturbed(double duration_s, const std::string& seed,
                             const std::function<void(Path&)>& change)
{
    Path path;
    path.snr_dB = 10.0;
    path.before_s = duration_s;
    path.after_s = 0.0;
    change(path);
    return testsupport::sound(std::vector<testsupport::Piece>(), path, RATE_Hz, seed);
}

} // namespace

const std::vector<Silence>& silences()
{
    const auto with = [](const char* title, const std::function<void(Path&)>& change) {
        return Silence{title, [change](double duration_s, const std::string& seed) {
                           return disturbed(duration_s, seed, change);
                       }};
    };
    const auto falling = [](const char* title, double drop_dB, double loud_s = 10.0) {
        return Silence{title, [=](double duration_s, const std::string& seed) {
                           return testsupport::fallingNoise(duration_s, loud_s, drop_dB, RATE_Hz,
                                                            seed);
                       }};
    };
    // Sounds of some other kind, 26 dB over the noise in 500 Hz.
    const auto instead = [](const char* title, const auto& sound) {
        return Silence{title, [sound](double duration_s, const std::string& seed) {
                           std::vector<float> samples = sound(duration_s, seed);
                           testsupport::addNoise(samples, RATE_Hz, 1.0, 26.0, seed);
                           for (float& sample : samples)
                               sample *= 0.3F;
                           return samples;
                       }};
    };
    static const std::vector<Silence> list = {
        with("white noise", [](Path&) {}),
        with("noise through a 500 Hz filter", [](Path& path) { path.filter_Hz = 500; }),
        with("static crashes, 2 a second", [](Path& path) { path.static_per_s = 2; }),
        with("clicks, 3 a second", [](Path& path) { path.clicks_per_s = 3; }),
        with("mains hum", [](Path& path) { path.hum_dB = 6; }),
        with("static crashes through a 500 Hz filter",
             [](Path& path) {
                 path.static_per_s = 2;
                 path.filter_Hz = 500;
             }),
        {"a carrier that fades (Rayleigh, 0.2 Hz)",
         [](double duration_s, const std::string& seed) {
             Path path;
             path.snr_dB = 10.0;
             path.scatter_Hz = 0.2;
             path.before_s = path.after_s = 0.0;
             return testsupport::sound({{true, duration_s}}, path, RATE_Hz, seed);
         }},
        falling("noise that falls by 10 dB, four times a minute", 10.0),
        falling("noise that falls by 20 dB, four times a minute", 20.0),
        falling("noise that falls by 40 dB, four times a minute", 40.0),
        falling("noise that falls to nothing, four times a minute",
                std::numeric_limits<double>::infinity()),
        falling("noise, 3 of 15 s, 40 dB less between", 40.0, 3.0),
        falling("noise, 3 of 15 s, nothing between", std::numeric_limits<double>::infinity(), 3.0),
        instead("a teleprinter",
                [](double duration_s, const std::string& seed) {
                    return testsupport::teleprinter(duration_s, 1000.0, RATE_Hz, seed);
                }),
        instead("teleprinters of 45 to 100 baud and 85 to 850 Hz, SITOR",
                [](double duration_s, const std::string& seed) {
                    return testsupport::otherTeleprinters(duration_s, RATE_Hz, seed);
                }),
        instead("SITOR in bursts",
                [](double duration_s, const std::string& seed) {
                    return testsupport::teleprinterBursts(duration_s, RATE_Hz, seed);
                }),
        instead("speech",
                [](double duration_s, const std::string& seed) {
                    return testsupport::speech(duration_s, RATE_Hz, seed);
                }),
        instead("dialling tones",
                [](double duration_s, const std::string& seed) {
                    return testsupport::dialling(duration_s, RATE_Hz, seed);
                }),
        instead("time pips",
                [](double duration_s, const std::string& seed) {
                    return testsupport::timePips(duration_s, RATE_Hz, seed);
                }),
        instead("time codes",
                [](double duration_s, const std::string& seed) {
                    return testsupport::timeCode(duration_s, RATE_Hz, seed);
                }),
        instead("ringing and engaged tones",
                [](double duration_s, const std::string& seed) {
                    return testsupport::ringing(duration_s, RATE_Hz, seed);
                }),
        instead("hopping tones",
                [](double duration_s, const std::string& seed) {
                    return testsupport::hoppingTones(duration_s, RATE_Hz, seed);
                }),
        instead("music",
                [](double duration_s, const std::string& seed) {
                    return testsupport::music(duration_s, RATE_Hz, seed);
                }),
        instead("phase keying",
                [](double duration_s, const std::string& seed) {
                    return testsupport::phaseKeying(duration_s, RATE_Hz, seed);
                }),
        instead("radar, 10 to 50 pulses a second",
                [](double duration_s, const std::string& seed) {
                    return testsupport::radar(duration_s, false, RATE_Hz, seed);
                }),
        instead("radar in bursts",
                [](double duration_s, const std::string& seed) {
                    return testsupport::radar(duration_s, true, RATE_Hz, seed);
                }),
        instead("chirps of an ionosonde, 25 to 100 kHz a second",
                [](double duration_s, const std::string& seed) {
                    return testsupport::sweeps(duration_s, 25e3, 100e3, RATE_Hz, seed);
                }),
        instead("carriers that sweep, 30 to 3000 Hz a second",
                [](double duration_s, const std::string& seed) {
                    return testsupport::sweeps(duration_s, 30.0, 3000.0, RATE_Hz, seed);
                }),
        instead("a carrier tuned across by hand",
                [](double duration_s, const std::string& seed) {
                    return testsupport::tunedAcross(duration_s, RATE_Hz, seed);
                }),
    };
    return list;
}

} // namespace reception
