#pragma once

#include <QByteArray>
#include <QList>

#include <cmath>
#include <numbers>

/// A SoundFont of sines, a few kilobytes long, put together byte by byte: a bank that loads at
/// once and whose sound is known.
namespace TinyBank {

struct Preset {
    int bank = 0;
    int program = 0;
    /// Frequency at pitch 60, in whole samples of a period at 44100 Hz.
    int periodSamples = 100;
};

/// Little-endian.
inline QByteArray number(int value, int bytes)
{
    QByteArray result;
    for (int i = 0; i < bytes; ++i)
        result.append(static_cast<char>((value >> (8 * i)) & 0xFF));
    return result;
}

inline QByteArray text(const QByteArray& value, qsizetype size)
{
    return value.leftJustified(size, '\0', true);
}

inline QByteArray chunk(const char* name, const QByteArray& data)
{
    const QByteArray padding(data.size() % 2, '\0');
    return name + number(static_cast<int>(data.size()), 4) + data + padding;
}

constexpr int kPeriods = 32;
/// Zeros that the format asks for behind every sample.
constexpr int kGap = 46;

inline QByteArray samplesOf(const Preset& preset)
{
    QByteArray samples;
    for (int i = 0; i < kPeriods * preset.periodSamples; ++i) {
        const double phase = 2.0 * std::numbers::pi * i / preset.periodSamples;
        samples += number(static_cast<int>(std::lround(16000.0 * std::sin(phase))), 2);
    }
    return samples + QByteArray(2 * kGap, '\0');
}

inline QByteArray generator(int oper, int amount)
{
    return number(oper, 2) + number(amount, 2);
}

/// The lists of the "pdta" chunk while they grow, one preset after the other.
struct Tables {
    QByteArray phdr, pbag, pgen, inst, ibag, igen, shdr, samples;

    void append(int index, const Preset& preset)
    {
        constexpr int kInstrument = 41;
        constexpr int kSampleId = 53;
        constexpr int kSampleModes = 54;
        const int start = static_cast<int>(samples.size() / 2);
        const int end = start + kPeriods * preset.periodSamples;
        phdr += text("preset", 20) + number(preset.program, 2) + number(preset.bank, 2) +
                number(index, 2) + QByteArray(12, '\0');
        pbag += number(index, 2) + number(0, 2);
        pgen += generator(kInstrument, index);
        inst += text("instrument", 20) + number(index, 2);
        ibag += number(2 * index, 2) + number(0, 2);
        igen += generator(kSampleModes, 1) + generator(kSampleId, index);
        shdr += text("sine", 20) + number(start, 4) + number(end, 4) +
                number(start + preset.periodSamples, 4) + number(end - preset.periodSamples, 4) +
                number(44100, 4) + number(60, 1) + number(0, 1) + number(0, 2) + number(1, 2);
        samples += samplesOf(preset);
    }

    /// The closing record that every list has.
    void close(int count)
    {
        phdr += text("EOP", 20) + number(0, 4) + number(count, 2) + QByteArray(12, '\0');
        pbag += number(count, 2) + number(0, 2);
        pgen += generator(0, 0);
        inst += text("EOI", 20) + number(count, 2);
        ibag += number(2 * count, 2) + number(0, 2);
        igen += generator(0, 0);
        shdr += text("EOS", 46);
    }
};

inline QByteArray bytes(const QList<Preset>& presets)
{
    Tables tables;
    int count = 0;
    for (const Preset& preset : presets)
        tables.append(count++, preset);
    tables.close(count);
    const QByteArray noModulators(10, '\0');
    const QByteArray info = "INFO" + chunk("ifil", number(2, 2) + number(1, 2)) +
                            chunk("isng", text("EMU8000", 8)) + chunk("INAM", text("sines", 6));
    const QByteArray lists = "pdta" + chunk("phdr", tables.phdr) + chunk("pbag", tables.pbag) +
                             chunk("pmod", noModulators) + chunk("pgen", tables.pgen) +
                             chunk("inst", tables.inst) + chunk("ibag", tables.ibag) +
                             chunk("imod", noModulators) + chunk("igen", tables.igen) +
                             chunk("shdr", tables.shdr);
    return chunk("RIFF", "sfbk" + chunk("LIST", info) +
                             chunk("LIST", "sdta" + chunk("smpl", tables.samples)) +
                             chunk("LIST", lists));
}

} // namespace TinyBank
