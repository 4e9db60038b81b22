#include "host/plot_command.h"

#include "host/failure.h"
#include "host/print.h"

namespace wavechain {
namespace {

// Where there is no recording, the one file named is OUT.
void TakeFiles(const CLI::Option& in, const CLI::Option& out, PlotRequest& request) {
  const bool isAlone = request.silence_s || request.response;
  if (isAlone && out.count() > 0) {
    Fail(ExitStatus::Usage, "with {} there is no recording: name OUT alone, not {} too",
         request.response ? "--response" : "--silence", request.input);
  }
  if (isAlone) {
    request.output.swap(request.input);
  }
  if (request.output.empty()) {
    Fail(ExitStatus::Usage, "{} is required; see wavechain plot --help",
         in.count() == 0 && !isAlone ? "IN" : "OUT");
  }
}

void AddWhatIsDrawn(CLI::App& plot, PlotRequest& request) {
  AddChainOptions(plot, request.chain);
  plot.add_option("--track", request.tracks,
                  "a chain of its own, drawn below everything else under that name, as in "
                  "\"tip=BeamPel column=6 | FIRFilter 20\"; may be given several times")
      ->allow_extra_args(false)
      ->type_name("\"NAME=FILTER | FILTER\"");
  plot.add_flag("--response", request.response,
                "draw the frequency response of the chains of -f and --track, measured by an "
                "impulse, in place of a recording");
  plot.add_flag("--phase", request.phase, "with --response: draw the phase, too");
  plot.add_option("--from", request.from_s, "start of the picture; 0 by default")
      ->type_name("SECONDS");
  plot.add_option("--to", request.to_s, "its end; the longest signal's by default")
      ->type_name("SECONDS");
  plot.add_option("--channel", request.channel, "channel to read, from 1 (files of several)")
      ->type_name("NUMBER");
}

void AddHowItIsDrawn(CLI::App& plot, PlotRequest& request) {
  plot.add_option("--size", request.size,
                  "size of the picture, in pixels (points in a PDF); 1000 wide and as high as its "
                  "panels by default")
      ->type_name("WxH");
  plot.add_option("--window", request.window_ms,
                  "length of the spectrograms' Hann window: 5 shows pulses, 30 shows harmonics; 15 "
                  "by default")
      ->type_name("MS");
  plot.add_option(
          "--max-frequency", request.highest_Hz,
          "upper end of spectrograms and responses; half the highest sampling rate by default")
      ->type_name("HZ");
  plot.add_option("--dynamics", request.dynamics_dB,
                  "from the spectrograms' darkest level to their brightest; 70 by default")
      ->type_name("DB");
  plot.add_option("--format", request.format, "png, svg or pdf, whatever the extension of OUT");
  plot.add_flag("--layout", request.layout,
                "print as JSON where each panel lies, with its axes, gaps and marks");
}

void AddTheRest(CLI::App& plot, PlotRequest& request) {
  plot.add_option("--library", request.library, "filter library to load instead of the usual one");
  plot.add_option("--silence", request.silence_s,
                  "seconds of silence as input, in place of a recording (with --rate)");
  plot.add_option(
      "--rate", request.rate,
      "sampling rate of the silence, of raw samples, or of a response (48000 by default), Hz");
  plot.add_option("-t,--type", request.type,
                  "IN is raw samples without a header, as in run (with --rate)");
  plot.add_option("--seed", request.seed, "of the noise that FricSyn draws; 1 by default");
  plot.add_flag("--allow-missing", request.allowMissing,
                "draw with filters whose data files are missing or empty: they add nothing");
  plot.add_flag("--library-tail", request.libraryTail,
                "leave the last 1024 samples as the library does");
  plot.add_flag("--no-record", request.noRecord, "do not note in OUT how it was made");
  plot.add_flag("--force", request.force, "replace OUT where it exists");
  plot.add_flag("--allow-truncated", request.allowTruncated,
                "take what is there of a recording that was cut short");
  plot.add_flag("-q,--quiet", request.quiet, "say nothing but warnings and errors");
}

}  // namespace

void AddPlot(CLI::App& app, PlotRequest& request) {
  CLI::App* plot =
      app.add_subcommand("plot", "Draw a recording, what a chain makes of it, and its tracks");
  CLI::Option* in =
      plot->add_option("IN", request.input,
                       "recording to read, as in run; - is standard input. Left out with --silence "
                       "and --response");
  in->type_name("");
  CLI::Option* out = plot->add_option("OUT", request.output,
                                      "picture to write: .png, .svg or .pdf; - is standard output");
  out->type_name("");
  AddWhatIsDrawn(*plot, request);
  AddHowItIsDrawn(*plot, request);
  AddTheRest(*plot, request);
  plot->footer(
      "The chain is written as in run; what it makes of the recording is drawn below it.\n"
      "Each sound gets a waveform and a spectrogram, each measure a curve against time with its\n"
      "unit, each file of events a row of marks. Where data are missing a curve has a gap, and "
      "the\n"
      "ground is grey.");
  plot->callback([&request, in, out] {
    TakeFiles(*in, *out, request);
    const std::string layout = Plot(request);
    if (!layout.empty()) {
      Print(layout);
    }
  });
}

}  // namespace wavechain
