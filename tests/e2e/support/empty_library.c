/* A library with all thirteen entry points, none of which makes anything. */
#define ENTRY(name)        \
  void* name(void** out);  \
  void* name(void** out) { \
    *out = 0;              \
    return 0;              \
  }

ENTRY(SetTrackI)
ENTRY(BeamPelI)
ENTRY(BeamDataI)
ENTRY(GlotSynI)
ENTRY(FricSynI)
ENTRY(PulseSynI)
ENTRY(FIRFilterI)
ENTRY(FIRNotchI)
ENTRY(ResampleI)
ENTRY(SumSourcesI)
ENTRY(EchoCancelI)
ENTRY(SineGenI)
ENTRY(SquareGenI)
