// Filters as users write them, on the command line and in files: understood, or refused in one
// line.

#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "host/chain_file.h"
#include "host/failure.h"
#include "host/filter_arguments.h"
#include "support/temp_folder.h"

namespace {

void CheckMessage(const wavechain::Failure& failure) {
  const std::string text = failure.what();
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(text.find('\n'), std::string::npos) << text;
  EXPECT_EQ(failure.Status(), wavechain::ExitStatus::Usage) << text;
}

// What was understood can be written out, and is then understood the same way.
void CheckCall(const wavechain::FilterCall& call) {
  EXPECT_EQ(call.values.size(), call.kind->parameters.size());
  EXPECT_LE(call.handed, static_cast<int>(call.values.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const support::TempFolder folder;
  fuzz::Input input(bytes, count);
  const bool saved = input.Flag();
  const std::string text = input.Rest();
  try {
    if (saved) {
      for (const wavechain::FilterCall& call :
           wavechain::ReadChainFile(folder.Write("chain.toml", text))) {
        CheckCall(call);
      }
    } else {
      CheckCall(wavechain::ParseFilter(text));
    }
  } catch (const wavechain::Failure& failure) {
    CheckMessage(failure);
  }
  return 0;
}
