#ifndef WAVEFILTERS_FRAME_KINDS_H
#define WAVEFILTERS_FRAME_KINDS_H

// The one list of the kinds of filter: exported entry point, factory, and what the factory
// makes. Only the file that defines the entry points includes it, since it sees every filter.

#include "dsp/echo_cancel.h"
#include "dsp/fir_filter.h"
#include "dsp/fir_notch.h"
#include "dsp/resample_blackman.h"
#include "dsp/sum_sources.h"
#include "frame/factory.h"
#include "frame/sine_filter.h"
#include "frame/square_filter.h"
#include "tracks/beam_data.h"
#include "tracks/beam_pel.h"
#include "tracks/set_track.h"
#include "voice/fric_syn.h"
#include "voice/glot_syn.h"
#include "voice/pulse_syn.h"

namespace wavefilters {

using SetTrackFactory = FactoryOf<SetTrack>;
using BeamPelFactory = FactoryOf<BeamPel>;
using BeamDataFactory = FactoryOf<BeamData>;
using GlotSynFactory = FactoryOf<GlotSyn>;
using FricSynFactory = FactoryOf<FricSyn>;
using PulseSynFactory = FactoryOf<PulseSyn>;
using FIRFactory = FactoryOf<FIRFilter>;
using FIRNotchFactory = FactoryOf<FIRNotch>;
using ResampleFactory = FactoryOf<ResampleBlackman>;
using SumSourcesFactory = FactoryOfPair<NonCausalP, SumSources>;
using EchoCancelFactory = FactoryOfPair<NonCausalP, EchoCancel>;
using SineFactory = FactoryOf<SineFilter>;
using SquareFactory = FactoryOf<SquareFilter>;

}  // namespace wavefilters

#define WAVEFILTERS_KINDS(KIND)        \
  KIND(SetTrackI, SetTrackFactory)     \
  KIND(BeamPelI, BeamPelFactory)       \
  KIND(BeamDataI, BeamDataFactory)     \
  KIND(GlotSynI, GlotSynFactory)       \
  KIND(FricSynI, FricSynFactory)       \
  KIND(PulseSynI, PulseSynFactory)     \
  KIND(FIRFilterI, FIRFactory)         \
  KIND(FIRNotchI, FIRNotchFactory)     \
  KIND(ResampleI, ResampleFactory)     \
  KIND(SumSourcesI, SumSourcesFactory) \
  KIND(EchoCancelI, EchoCancelFactory) \
  KIND(SineGenI, SineFactory)          \
  KIND(SquareGenI, SquareFactory)

#endif
