#!/bin/bash
#SBATCH --job-name=smooth
#SBATCH --array=1-4
#SBATCH --cpus-per-task=1
#SBATCH --requeue
#SBATCH --output=slurm-%a.txt
exec wavechain batch --chain smooth.toml --out out --keep-going -q --jobs "${SLURM_CPUS_PER_TASK:-1}" \
  --shard "$SLURM_ARRAY_TASK_ID/$SLURM_ARRAY_TASK_COUNT" --log "batch.$SLURM_ARRAY_TASK_ID.jsonl" recordings/*.wav
