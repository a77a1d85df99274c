#!/usr/bin/env python3
"""Runs a command and reports its wall time and the peak memory of its whole process tree.

Usage: peak_rss.py [--interval SECONDS] [--log FILE] -- COMMAND [ARGS...]

Every INTERVAL seconds (default 0.01; 0 measures time only, with no sampling) the helper sums the resident set size of the command and of
every process descended from it (found through the kernel's lists of children in /proc, so
worker processes count even when they start their own session) and keeps the largest sum. When the command ends it
prints one line on standard output:

    wall_s=1.234 peak_mib=56.7 peak_pss_mib=40.1 cpu_s=2.345 status=0 proc_mib=31.2

wall_s        wall-clock seconds from start to exit
peak_mib      peak of the summed RSS of the tree (MiB), as sampled
peak_pss_mib  peak of the summed PSS of the tree (MiB): pages shared between the tree's processes
              (the libraries every worker maps) are counted once, split between their users
proc_mib      peak RSS of the largest single process of the tree (MiB): for orvel-thumbs, a worker
cpu_s       user + system CPU seconds of the command and all its waited-for descendants
status      the command's exit status (128+N when killed by signal N)

The command's own output goes to FILE (default: discarded).
"""
import argparse
import os
import resource
import subprocess
import sys
import time

PAGE = os.sysconf("SC_PAGE_SIZE")


def read(path):
    fd = os.open(path, os.O_RDONLY)
    try:
        return os.read(fd, 65536)
    finally:
        os.close(fd)


def tree_rss_by_children(root):
    """Sums the RSS of root and its descendants, walking the kernel's per-thread lists of children.
    Reads only the tree's own entries, so sampling costs little CPU beside the measured command.
    Answers the sum and the largest single RSS."""
    total, largest, stack = 0, 0, [root]
    while stack:
        pid = stack.pop()
        try:
            rss = int(read(f"/proc/{pid}/statm").split()[1]) * PAGE
            total += rss
            largest = max(largest, rss)
            tasks = os.listdir(f"/proc/{pid}/task")
        except (OSError, IndexError, ValueError):
            continue  # the process ended while being read
        for tid in tasks:
            try:
                stack.extend(int(c) for c in read(f"/proc/{pid}/task/{tid}/children").split())
            except OSError:
                pass
    return total, largest


def tree_rss_by_scan(root):
    """The same sum from a scan of every process's parent link, for kernels without children lists."""
    table = {}
    for name in os.listdir("/proc"):
        if not name.isdigit():
            continue
        try:
            stat = read(f"/proc/{name}/stat")
            rss_pages = int(read(f"/proc/{name}/statm").split()[1])
        except (OSError, IndexError, ValueError):
            continue
        # The command name (field 2) may hold spaces and parentheses: parse after the last ')'.
        fields = stat[stat.rfind(b")") + 2:].split()
        table[int(name)] = (int(fields[1]), rss_pages * PAGE)
    children = {}
    for pid, (ppid, _) in table.items():
        children.setdefault(ppid, []).append(pid)
    total, largest, stack = 0, 0, [root]
    while stack:
        pid = stack.pop()
        if pid in table:
            total += table[pid][1]
            largest = max(largest, table[pid][1])
        stack.extend(children.get(pid, ()))
    return total, largest


def tree_pids(root):
    """root and its descendants, through the kernel's lists of children."""
    pids, stack = [], [root]
    while stack:
        pid = stack.pop()
        pids.append(pid)
        try:
            for tid in os.listdir(f"/proc/{pid}/task"):
                try:
                    stack.extend(int(c) for c in read(f"/proc/{pid}/task/{tid}/children").split())
                except OSError:
                    pass
        except OSError:
            pass
    return pids


def tree_pss(root):
    """Sums the proportional set size of the tree (smaps_rollup), in bytes."""
    total = 0
    for pid in tree_pids(root):
        try:
            for line in read(f"/proc/{pid}/smaps_rollup").splitlines():
                if line.startswith(b"Pss:"):
                    total += int(line.split()[1]) * 1024
                    break
        except (OSError, ValueError, IndexError):
            pass
    return total


has_pss = os.path.exists(f"/proc/{os.getpid()}/smaps_rollup")

tree_rss = tree_rss_by_children if os.path.exists(f"/proc/{os.getpid()}/task/{os.getpid()}/children") \
    else tree_rss_by_scan


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--interval", type=float, default=0.01)
    parser.add_argument("--log", default=os.devnull)
    parser.add_argument("command", nargs=argparse.REMAINDER)
    args = parser.parse_args()
    command = args.command[1:] if args.command[:1] == ["--"] else args.command
    if not command:
        parser.error("no command given")

    with open(args.log, "ab") as log:
        start = time.monotonic()
        try:
            proc = subprocess.Popen(command, stdout=log, stderr=log, stdin=subprocess.DEVNULL)
        except OSError as e:
            log.write(f"peak_rss.py: cannot run {command[0]}: {e.strerror}\n".encode())
            print("wall_s=0.000 peak_mib=0.0 peak_pss_mib=0.0 cpu_s=0.000 status=127 proc_mib=0.0")
            return 0
        peak = peak_pss = peak_proc = 0
        if args.interval <= 0:
            proc.wait()  # timing only: no sampler competing for the cores
        while proc.poll() is None:
            total, largest = tree_rss(proc.pid)
            peak, peak_proc = max(peak, total), max(peak_proc, largest)
            if has_pss:
                peak_pss = max(peak_pss, tree_pss(proc.pid))
            time.sleep(args.interval)
        wall = time.monotonic() - start

    # The kernel's ru_maxrss is left out on purpose: it is per process, and for the forked child it
    # also counts this interpreter's pages from before the exec.
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    status = proc.returncode if proc.returncode >= 0 else 128 - proc.returncode
    mib = 1024.0 * 1024.0
    print(f"wall_s={wall:.3f} peak_mib={peak / mib:.1f} peak_pss_mib={peak_pss / mib:.1f} "
          f"cpu_s={usage.ru_utime + usage.ru_stime:.3f} status={status} proc_mib={peak_proc / mib:.1f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
