#!/usr/bin/env python3
"""How many workers a shared-out render pays for: farm_workers.py [--chunks N] [--chunk S] [--whole S] [--plan S]
[--beside S] [--join S] [--start S] [--failures PER_HOUR]

Simulates workers that take parts in order. Each part costs its start (program, media, the first picture) and its pictures. A worker's
machine fails at random, as often an hour as it is told, and its part is queued again and may begin two minutes later, as Slurm has
it; the machine is back after ten minutes. Prints what a film takes by the number of workers, the mean of ten runs, and what Amdahl's law would give."""
import argparse
import heapq
import random

REQUEUE, REPAIR = 120.0, 600.0  # seconds
RUNS = 10

options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
options.add_argument("--chunks", type=int, default=2000)
options.add_argument("--chunk", type=float, default=60, help="seconds that a chunk's pictures take")
options.add_argument("--plan", type=float, default=1)
options.add_argument("--beside", type=float, default=60, help="seconds of what lies beside the pictures")
options.add_argument("--join", type=float, default=30)
options.add_argument("--start", type=float, default=0.3)
options.add_argument("--failures", type=float, default=0.05, help="of a machine, an hour")
given = options.parse_args()


def film(workers, rng):
    """Seconds until the last part is done, and parts that were begun in vain."""
    # What takes longest first: what lies beside the pictures.
    queue = [(0.0, 0, given.beside)] + [(0.0, 1 + part, given.chunk) for part in range(given.chunks)]
    heapq.heapify(queue)
    free = [0.0] * min(workers, len(queue))
    heapq.heapify(free)
    end, lost = 0.0, 0
    while queue:
        ready, part, work = heapq.heappop(queue)
        begin = max(heapq.heappop(free), ready)
        # Pictures differ: half to one and a half of what they take on average.
        length = given.start + work * rng.uniform(0.5, 1.5)
        breaks = rng.expovariate(given.failures / 3600) if given.failures else float("inf")
        if breaks < length:
            lost += 1
            heapq.heappush(queue, (begin + breaks + REQUEUE, part, work))
            heapq.heappush(free, begin + breaks + REPAIR)
        else:
            end = max(end, begin + length)
            heapq.heappush(free, begin + length)
    return end, lost


serial = given.plan + given.join
one = serial + given.beside + given.chunks * given.chunk
print(f"{'workers':>8} {'seconds':>10} {'times one':>10} {'Amdahl':>10} {'in vain':>8}")
for workers in (1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000):
    films = [film(workers, random.Random(1000 * workers + run)) for run in range(RUNS)]
    seconds = serial + sum(end for end, _ in films) / RUNS
    lost = sum(lost for _, lost in films) / RUNS
    amdahl = one / (serial + (one - serial) / workers)
    print(f"{workers:>8} {seconds:>10.0f} {one / seconds:>10.1f} {amdahl:>10.1f} {lost:>8.1f}")
