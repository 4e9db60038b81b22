#include "host/catalogue.h"

#include <algorithm>

#include "host/gaps_behind.h"

namespace wavechain {
namespace {

constexpr double MostWhole = std::numeric_limits<std::int32_t>::max();
constexpr double LeastWhole = std::numeric_limits<std::int32_t>::min();
constexpr double MaxHalfLength = 2048;

constexpr NamedValue BeamModes[] = {
    {"none", 0},
    {"distance_3_4", 1},
    {"bend", 2},
    {"velocity", 3},
    {"acceleration", 4},
    {"speed", 5},
    {"tangential_acceleration", 6},
    {"distance", 7},
    {"palate", 8},
};

constexpr Parameter BeamPelParameters[] = {
    {.name = "column",
     .unit = "",
     .help = "which number of each line to render, counted from 1 (6: y of pellet 3)",
     .preset = 6,
     .minimum = 1,
     .maximum = MostWhole,
     .whole = true},
};

constexpr Parameter BeamDataParameters[] = {
    {.name = "mode",
     .unit = "",
     .help = "which measure to render",
     .preset = 0,
     .minimum = 0,
     .maximum = 8,
     .whole = true,
     .names = BeamModes},
    {.name = "a",
     .unit = "",
     .help = "mode distance: the first pellet; mode palate: 1 renders the nearest point's number",
     .preset = 0,
     .minimum = 0,
     .maximum = 8,
     .whole = true},
    {.name = "b",
     .unit = "",
     .help = "mode distance: the second pellet",
     .preset = 0,
     .minimum = 0,
     .maximum = 8,
     .whole = true},
};

constexpr Parameter FIRFilterParameters[] = {
    {.name = "half_length",
     .unit = "samples",
     .help = "the filter reaches this far to either side: 2 half_length + 1 coefficients",
     .minimum = 1,
     .maximum = MaxHalfLength,
     .whole = true,
     .reason = "with 0 its only coefficient would be 0/0, not a number"},
};

constexpr Parameter FIRNotchParameters[] = {
    {.name = "half_length",
     .unit = "samples",
     .help = "the filter reaches this far to either side: 2 half_length + 1 coefficients",
     .minimum = 0,
     .maximum = MaxHalfLength,
     .whole = true},
    {.name = "frequency",
     .unit = "Hz",
     .help = "centre of the notch",
     .preset = 2500,
     .minimum = 0,
     .belowHalfRate = true},
    {.name = "edge_weight",
     .unit = "",
     .help = "weight of the outermost two of the seven cosines that the notch is made of",
     .preset = 0.5},
};

double ResamplerCutoff(std::span<const double> before) {
  return 1.0 / std::max(before[0], before[1]);
}

constexpr Parameter ResampleParameters[] = {
    {.name = "down",
     .unit = "",
     .help = "decimation factor M: one output every M high-rate steps",
     .preset = 1,
     .minimum = 1,
     .maximum = MostWhole,
     .whole = true},
    {.name = "up",
     .unit = "",
     .help = "interpolation factor L: L high-rate steps for each input sample",
     .preset = 1,
     .minimum = 1,
     .maximum = MostWhole,
     .whole = true},
    {.name = "down_start",
     .unit = "high-rate steps",
     .help = "decimation count to start with; an output is made at 0",
     .preset = 0,
     .minimum = LeastWhole,
     .maximum = MostWhole,
     .whole = true},
    {.name = "phase_start",
     .unit = "high-rate steps",
     .help = "interpolation phase to start with",
     .preset = 0,
     .minimum = LeastWhole,
     .maximum = MostWhole,
     .whole = true},
    {.name = "shift",
     .unit = "high-rate Nyquist frequency",
     .help = "frequency by which the kernel is modulated, 0 for a low-pass",
     .preset = 0},
    {.name = "half_length",
     .unit = "high-rate steps",
     .help = "the kernel reaches this far to either side; below up there is none, and zeros fill "
             "the signal up",
     .preset = 60,
     .minimum = 0,
     .maximum = MaxHalfLength,
     .whole = true},
    {.name = "cutoff",
     .unit = "high-rate Nyquist frequency",
     .help = "cutoff of the kernel",
     .computed = ResamplerCutoff,
     .computedText = "1 / max(down, up)"},
    {.name = "widen",
     .unit = "",
     .help = "the cutoff is raised by this, divided by the kernel's half-length",
     .preset = 0.52},
};

constexpr HostArgument ResampleArguments[] = {
    {"rate", "HZ",
     "the rate to reach: up, down and the kernel follow from the rate that comes in, in several "
     "stages where one kernel is too short; settles all parameters",
     HostValue::Number, false, true},
    {"quality", "fast|good|best",
     "the kernel for rate, or for up and down: fast is flat to 0.8 of the lower Nyquist frequency "
     "and clean from 1.2 on, good is clean from 1.0 on by 80 dB, best by 100 dB and flat to 0.85; "
     "good by default",
     HostValue::Word},
};

constexpr HostArgument SecondSignal[] = {
    {"with", "\"FILE | FILTER | ...\"",
     "the second signal: a recording, and filters that it goes through by choice",
     HostValue::Signal, true},
    {"channel", "NUMBER", "channel of that recording, from 1 (files of several)",
     HostValue::Number},
};

// An output for each step at which one is due, to the end of the last input.
std::optional<std::int64_t> ResampledLength(std::span<const double> values, std::int64_t fed) {
  const auto down = static_cast<std::int64_t>(values[0]);
  const auto up = static_cast<std::int64_t>(values[1]);
  const bool startsAtZero = values[2] == 0.0 && values[3] == 0.0;
  if (!startsAtZero || fed > std::numeric_limits<std::int64_t>::max() / up - down) {
    return std::nullopt;
  }
  return (fed * up + down - 1) / down;
}

constexpr Parameter SumSourcesParameters[] = {
    {.name = "gain1", .unit = "factor", .help = "weight of the first signal", .preset = 1},
    {.name = "gain2", .unit = "factor", .help = "weight of the second signal", .preset = 1},
};

constexpr Parameter EchoCancelParameters[] = {
    {.name = "span",
     .unit = "samples",
     .help = "margin kept around the second signal; the result does not depend on it",
     .preset = 0,
     .minimum = 0,
     .maximum = MaxHalfLength,
     .whole = true},
};

constexpr Parameter SineParameters[] = {
    {.name = "frequency",
     .unit = "Hz",
     .help = "frequency of the sine",
     .preset = 100,
     .minimum = 0,
     .belowHalfRate = true},
    {.name = "amplitude", .unit = "sample units", .help = "peak value", .preset = 1},
    {.name = "phase", .unit = "degrees", .help = "phase of the first sample", .preset = 0},
};

constexpr Parameter SquareParameters[] = {
    {.name = "half_period",
     .unit = "samples",
     .help = "length of each level",
     .preset = 256,
     .minimum = 1,
     .maximum = MostWhole,
     .whole = true},
    {.name = "weight",
     .unit = "sample units",
     .help = "what the current level (-1 or 1) is multiplied by",
     .preset = 1},
    {.name = "previous_weight",
     .unit = "sample units",
     .help = "what the level of the sample before is multiplied by, and added",
     .preset = 0},
};

constexpr DataFile RecordedTrack[] = {
    {".iop", "1024 bytes of header, then 16-bit samples, most significant byte first",
     DataKind::RecordedTrack, "data"}};
constexpr DataFile PelletTrack[] = {
    {".xyd", "one line every 6.866 ms: 16 differences of coordinates in thousandths of a mm",
     DataKind::Pellets, "data"}};
constexpr DataFile PelletsAndPalate[] = {
    PelletTrack[0],
    {"pal.dat", "the palate's contour: an x and a y a line, thousandths of a mm", DataKind::Palate,
     "palate"}};
constexpr DataFile GlottalEvents[] = {
    {".gpl", "a pulse a line: ms, amplitude, kHz, bandwidth in kHz, log-area ratios",
     DataKind::GlottalEvents, "events"}};
constexpr DataFile FricationEvents[] = {{".fla", "a burst a line: ms, amplitude, log-area ratios",
                                         DataKind::FricationEvents, "events"}};
constexpr DataFile ImpulseEvents[] = {
    {".gpm", "an impulse a line: ms, amplitude", DataKind::ImpulseEvents, "events"}};

constexpr HostArgument TrackArguments[] = {
    {"data", "FILE", "the data file, instead of the one beside the recording", HostValue::File}};
constexpr HostArgument PalateArguments[] = {
    TrackArguments[0],
    {"palate", "FILE", "the palate's file, instead of pal.dat beside the recording",
     HostValue::File}};
constexpr HostArgument EventArguments[] = {
    {"events", "FILE", "the event file, instead of the one beside the recording", HostValue::File}};

OutputScale TrackScale(std::span<const double> /*values*/) { return {"track units", 10.0}; }
OutputScale PelletScale(std::span<const double> /*values*/) { return {"mm", 100.0}; }

// The units are those of the numbers that come out. The library's own labels differ where a
// mode divides by milliseconds, and the acceleration of mode 4 is 6.866 times what mm/s^2 says:
// it is a difference of successive velocities times 1000, not divided by the frame period.
OutputScale MeasureScale(std::span<const double> values) {
  const int mode = static_cast<int>(values[0]);
  switch (mode) {
    case 3:
      return {"mm/s", 500.0};
    case 4:
      return {"mm/s^2 x 6.866", 200000.0};
    case 5:
      return {"mm/ms", 1.0};
    case 6:
      return {"mm/s per ms", 200.0};
    case 8:
      return values[1] == 1.0 ? OutputScale{"point number", 2048.0} : OutputScale{"mm", 100.0};
    default:
      return {"mm", 150.0};
  }
}

constexpr FilterKind Kinds[] = {
    {.name = "SetTrack",
     .entryPoint = "SetTrackI",
     .purpose = "replaces the signal by the track recorded in a file beside it",
     .hostArguments = TrackArguments,
     .dataFiles = RecordedTrack,
     .outputScale = TrackScale,
     .neverEnds = true},
    {.name = "BeamPel",
     .entryPoint = "BeamPelI",
     .purpose = "replaces the signal by one coordinate of its pellet file",
     .parameters = BeamPelParameters,
     .hostArguments = TrackArguments,
     .dataFiles = PelletTrack,
     .trackDriven = true,
     .takesStream = true,
     .outputScale = PelletScale},
    {.name = "BeamData",
     .entryPoint = "BeamDataI",
     .purpose = "replaces the signal by a measure of its pellets: distance, speed, palate contact",
     .parameters = BeamDataParameters,
     .hostArguments = PalateArguments,
     .dataFiles = PelletsAndPalate,
     .trackDriven = true,
     .takesStream = true,
     .outputScale = MeasureScale},
    {.name = "GlotSyn",
     .entryPoint = "GlotSynI",
     .purpose = "adds glottal pulses, shaped by a vocal tract, from an event file",
     .hostArguments = EventArguments,
     .dataFiles = GlottalEvents,
     .trackDriven = true},
    {.name = "FricSyn",
     .entryPoint = "FricSynI",
     .purpose = "adds bursts of noise, shaped by a vocal tract, from an event file",
     .hostArguments = EventArguments,
     .dataFiles = FricationEvents,
     .trackDriven = true},
    {.name = "PulseSyn",
     .entryPoint = "PulseSynI",
     .purpose = "sets single samples to impulses from an event file",
     .hostArguments = EventArguments,
     .dataFiles = ImpulseEvents,
     .trackDriven = true},
    {.name = "FIRFilter",
     .entryPoint = "FIRFilterI",
     .purpose = "smooths: a moving average weighted by a Hamming window",
     .parameters = FIRFilterParameters,
     .gapsBehind = SmoothedGaps,
     .linear = true},
    {.name = "FIRNotch",
     .entryPoint = "FIRNotchI",
     .purpose = "takes out a narrow band around one frequency",
     .parameters = FIRNotchParameters,
     .gapsBehind = SmoothedGaps,
     .linear = true},
    {.name = "ResampleBlackman",
     .entryPoint = "ResampleI",
     .purpose = "changes the sampling rate by the ratio up / down",
     .note = "n samples become n up / down, rounded up, in each stage; the filter announces that "
             "number rounded down, and all that it delivers is kept",
     .parameters = ResampleParameters,
     .hostArguments = ResampleArguments,
     .deliveredLength = ResampledLength,
     .gapsBehind = ResampledGaps},
    {.name = "SumSources",
     .entryPoint = "SumSourcesI",
     .purpose = "mixes two signals with a weight each",
     .note = "the output runs to the end of the longer signal; both must have the same rate",
     .sources = 2,
     .parameters = SumSourcesParameters,
     .hostArguments = SecondSignal},
    {.name = "EchoCancel",
     .entryPoint = "EchoCancelI",
     .purpose = "subtracts a second signal from the first",
     .note = "the output runs to the end of the longer signal; both must have the same rate",
     .sources = 2,
     .parameters = EchoCancelParameters,
     .hostArguments = SecondSignal},
    {.name = "SineFilter",
     .entryPoint = "SineGenI",
     .purpose = "adds a sine",
     .parameters = SineParameters},
    {.name = "SquareFilter",
     .entryPoint = "SquareGenI",
     .purpose = "replaces the signal by a square wave",
     .parameters = SquareParameters,
     .gapsBehind = ReplacedGaps},
};

}  // namespace

std::span<const FilterKind> Catalogue() { return Kinds; }

const FilterKind* FindFilter(std::string_view name) {
  const auto* found = std::ranges::find(Kinds, name, &FilterKind::name);
  return found == std::end(Kinds) ? nullptr : found;
}

}  // namespace wavechain
