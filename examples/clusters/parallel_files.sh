#!/bin/sh
# A process for each recording, as many at a time as there are processors; stops at the first failure.
mkdir -p out
parallel --halt soon,fail=1 wavechain run -q --force --chain smooth.toml {} out/{/.}.wav ::: recordings/*.wav
