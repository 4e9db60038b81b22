// Calls in any order, with any parameters, pulls, peeks and sources, on every kind: nothing is
// written outside a buffer, and the host gets back what it gave.

#include <algorithm>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "hardening/plain_filter.h"

namespace {

using hardening::PlainFilter;
using hardening::PlainHost;

const hardening::DataFiles& Files() {
  static const hardening::DataFiles files(300.0);
  return files;
}

void SetSources(fuzz::Input& input, PlainHost& host) {
  host.Describe(input.Int(0, 4000), input.Interval_ms(), Files().Signal());
  for (hardening::PlainSource& source : host.sources) {
    source.deliver = {};
    source.claim = {};
    const int sometimes = input.Byte();
    if (sometimes % 4 == 1) {
      source.deliver = [most = input.Size(900)](int wanted) { return std::min(wanted, most); };
    }
    if (sometimes % 16 == 3) {
      source.claim = [more = input.Int(-100000, 100000)](int wanted, int written) {
        return written == wanted || more < 0 ? written + more : written;
      };
    }
  }
}

void Step(fuzz::Input& input, const support::Kind& kind, PlainHost& host, PlainFilter& filter,
          bool& connected, fuzz::Allowance& allowance) {
  const bool pulls = connected || !hardening::NeedsSourceToPull(kind);
  switch (input.Int(0, 11)) {
    case 0:
      filter.Set_param_list(input.Numbers(9));
      break;
    case 1: {
      const int count = input.Int(0, hardening::SourceCount(kind) + 1);
      SetSources(input, host);
      filter.Attach(host, std::min(count, 3));
      connected = count > 0;
      break;
    }
    case 2:
      if (connected) filter.Length();
      break;
    case 3:
      filter.Dispose();
      connected = false;
      break;
    case 4:
      if (connected) filter.Slots().SrcSet(filter.Object());
      break;
    case 5:
      filter.Slots().Init(filter.Object(), input.Interval_ms());
      break;
    case 6:
      if (hardening::Peeks(kind)) filter.Peek(input.Int(-100, 9000));
      break;
    default:
      if (pulls) hardening::PullFromLiars(kind, filter, allowance.Of(input.Int(0, 9000)));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  fuzz::Input input(bytes, count);
  const support::Kind kind = support::Kinds[static_cast<std::size_t>(input.Int(0, 12))];
  PlainHost host;
  host.stream.text = Files().Text(kind);
  {
    PlainFilter filter(kind);
    if (input.Flag()) filter.Set_num_stream(&host.stream);
    if (input.Flag()) filter.Set_console_out(&host.console);
    bool connected = false;
    fuzz::Allowance allowance = fuzz::Allowance::OfRun(count);
    for (int step = 0; step < 40 && !input.Empty(); ++step) {
      Step(input, kind, host, filter, connected, allowance);
    }
    EXPECT_EQ(filter.Release(), 0U);
  }
  EXPECT_TRUE(host.Balanced());
  return 0;
}
