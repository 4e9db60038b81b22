#!/bin/sh
# A process for each of four parts. With --sshlogin each may run on another machine that shares the folder.
parallel --quote --joblog parallel.log wavechain batch --chain smooth.toml --out out --jobs 1 --keep-going -q \
  --shard {}/4 --log batch.{}.jsonl recordings/*.wav ::: 1 2 3 4
