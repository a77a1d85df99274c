#!/usr/bin/env python3
"""Pairs each X_Orvel benchmark with X_Qt from one Google Benchmark JSON run and prints Qt/Orvel CPU-time ratios.

Usage: strings_bench --benchmark_format=json --benchmark_repetitions=5 | bench/strings/ratios.py
With repetitions the medians are used.
"""
import json
import sys

data = json.load(sys.stdin)
times = {}
for b in data["benchmarks"]:
    if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
        continue
    name = b.get("run_name", b["name"])
    if b.get("run_type") == "iteration" and any(x.get("aggregate_name") == "median" for x in data["benchmarks"]):
        continue
    times[name] = (b["cpu_time"], b["time_unit"])

print(f"{'benchmark':32} {'ours':>12} {'Qt':>12} {'Qt/ours':>8}")
for name, (ours, unit) in sorted(times.items()):
    if "_Orvel" not in name:
        continue
    peer = name.replace("_Orvel", "_Qt")
    if peer not in times:
        continue
    qt = times[peer][0]
    print(f"{name.replace('_Orvel', ''):32} {ours:10.1f}{unit:>2} {qt:10.1f}{unit:>2} {qt / ours:8.2f}")
