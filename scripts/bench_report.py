#!/usr/bin/env python3
"""Turns Google Benchmark JSON files into bench/REPORT.md and bench/report.png.

    scripts/bench_report.py [--meta machine.json] [--out DIR] RESULTS.json...

Each JSON file is one run of one bench_<subsystem> program (several files may share a
program). Every Tessera case is paired with its peers by the PAIRS table below; the ratio is
the peer's time over Tessera's for the same work, from the medians of the repetitions, so
above 1 means Tessera is faster. A case whose peer did not run shows "—"; a benchmark the
table does not know is listed without a ratio. Benchmarks that only report counters (the
timer lateness ones) get a table of their own.
"""

import argparse
import importlib.util
import json
import math
import os
import re
import statistics
import sys
from collections import OrderedDict

SUBSYSTEM_ORDER = ["memory", "text", "time", "internet", "events", "timers", "numerics"]

# (label, Tessera case, {peer label: peer name}). The case is a regex matched against the
# whole benchmark name; each peer name is expanded from its groups (\1, \2...), so one entry
# covers every size and argument of a family.
PAIRS = [
    # memory
    ("Bit reader, mixed widths", r"BM_BitReaderReadBitsMixed(/.*)?",
     {"64-bit window reader": r"BM_WindowReadBitsMixed\1"}),
    ("Bit reader, aligned blocks", r"BM_BitReaderReadDataAligned(/.*)?", {"memcpy": r"BM_MemcpyAligned\1"}),
    ("Bit reader, unaligned blocks", r"BM_BitReaderReadDataUnaligned(/.*)?", {}),
    ("Buffer pool, no thread started", r"BM_BufferPool_NoThreadStarted(/.*)?",
     {"malloc/free": r"BM_Malloc_NoThreadStarted\1"}),
    ("Buffer pool, threaded process", r"BM_BufferPool_ThreadedProcess(/.*)?",
     {"malloc/free": r"BM_Malloc_ThreadedProcess\1"}),
    # text
    ("Code page widen", r"BM_TextWidenCodePage(/.*)?", {"ICU": r"BM_IcuToUChars\1"}),
    ("Code page narrow", r"BM_TextNarrowCodePage(/.*)?", {"ICU": r"BM_IcuFromUChars\1"}),
    ("UTF-8 widen", r"BM_TextWidenUtf8(/.*)?", {"ICU": r"BM_IcuStrFromUtf8\1"}),
    ("UTF-8 narrow", r"BM_TextNarrowUtf8(/.*)?", {"ICU": r"BM_IcuStrToUtf8\1"}),
    ("Parse int", r"BM_TextNumericInt(/.*)?", {"from_chars": r"BM_FromCharsInt\1"}),
    ("Parse double", r"BM_TextNumericDouble(/.*)?", {"from_chars": r"BM_FromCharsDouble\1"}),
    ("Format int", r"BM_TextFormatNumberInt(/.*)?",
     {"to_chars": r"BM_ToCharsInt\1", "ostringstream": r"BM_OstringstreamInt\1",
      "reused stream": r"BM_ReusedStreamInt\1"}),
    ("Format double", r"BM_TextFormatNumberDouble(/.*)?",
     {"to_chars %g": r"BM_ToCharsDoubleGeneral6\1", "to_chars shortest": r"BM_ToCharsDoubleShortest\1",
      "ostringstream": r"BM_OstringstreamDouble\1", "reused stream": r"BM_ReusedStreamDouble\1"}),
    ("Find", r"BM_TextFind(/.*)?", {"string_view::find": r"BM_StringViewFind\1", "memmem": r"BM_Memmem\1"}),
    ("Search forms", r"BM_TextSearchForms(/.*)?", {}),
    # time
    ("Format date", r"Format_Tessera(/.*)?", {"POCO": r"Format_Poco\1", "strftime": r"Format_strftime\1"}),
    ("Parse date", r"Parse_Tessera(/.*)?", {"POCO": r"Parse_Poco\1", "strptime": r"Parse_strptime\1"}),
    # internet
    ("Base64 encode", r"BM_Base64Encode(/.*)?", {"POCO": r"BM_PocoBase64Encoder\1"}),
    ("Base64 decode", r"BM_Base64Decode(/.*)?", {"POCO": r"BM_PocoBase64Decoder\1"}),
    ("Media type parse", r"BM_MimeParseMediaType(/.*)?", {"POCO": r"BM_PocoMediaType\1"}),
    ("Quoted-printable decode", r"BM_MimeQuotedPrintableDecode(/.*)?",
     {"POCO": r"BM_PocoQuotedPrintableDecoder\1"}),
    ("Properties set", r"BM_PropertiesSet(/.*)?", {"std::map": r"BM_StdMapSet\1"}),
    ("Properties get", r"BM_PropertiesGet(/.*)?", {"std::map": r"BM_StdMapGet\1"}),
    ("URI parse + format", r"BM_UriParseFormat(/.*)?",
     {"uriparser": r"BM_UriparserParseFormat\1", "POCO": r"BM_PocoUriParseFormat\1"}),
    ("Percent encode", r"BM_UriPercentEncode(/.*)?", {"uriparser": r"BM_UriparserEscape\1"}),
    ("Percent decode", r"BM_UriPercentDecode(/.*)?", {"uriparser": r"BM_UriparserUnescape\1"}),
    # events
    ("Queue post + pull, one thread", r"BM_PostPull_OneThread<Tessera_>(/.*)?",
     {"POCO": r"BM_PostPull_OneThread<Poco_>\1", "mutex + deque": r"BM_PostPull_OneThread<Plain_>\1"}),
    ("Queue post + pull, two threads", r"BM_PostPull_TwoThreads<Tessera_>(/.*)?",
     {"POCO": r"BM_PostPull_TwoThreads<Poco_>\1", "mutex + deque": r"BM_PostPull_TwoThreads<Plain_>\1"}),
    ("Make an event", r"BM_MakeEvent_Pool(/.*)?", {"boost::make_shared": r"BM_MakeEvent_BoostMakeShared\1"}),
    ("Window-message dispatch", r"BM_Win32EventDispatch_TwoPosters(/.*)?", {}),
    # timers
    (r"Start + stop, \1", r"StartStop_(EventTimer|WinMMTimer|WinMMTimerOnDispatcher|WindowTimer)(/.*)?",
     {"timerfd": r"StartStop_BareTimerfd\2", "Asio": r"StartStop_AsioSteadyTimer\2"}),
    (r"Lateness, \1", r"Lateness_(EventTimer|WinMMTimer|WinMMTimerOnDispatcher|WindowTimer)(/.*)?",
     {"timerfd": r"Lateness_BareTimerfd\2", "Asio": r"Lateness_AsioSteadyTimer\2"}),
    ("A thousand multimedia timers", r"WinMMTimer_Thousand(/.*)?", {}),
    # numerics
    ("Mersenne Twister", r"BM_Mt19937Words(/.*)?", {"std::mt19937": r"BM_StdMt19937Words\1"}),
    ("White noise", r"BM_Int16WhiteNoise(/.*)?", {}),
    ("Fixed multiply + divide", r"BM_FixedMultiplyDivide(/.*)?", {"double": r"BM_DoubleMultiplyDivide\1"}),
    ("Fixed square root", r"BM_FixedSqrt(/.*)?", {"double": r"BM_DoubleSqrt\1"}),
]

# What the arguments of some families stand for, in the report's words; anything else is
# shown as it stands, with sizes in KiB and MiB.
ARGUMENTS = [
    (r"BM_TextWidenCodePage|BM_TextNarrowCodePage",
     {"page:0": "1252", "page:1": "65001 ASCII", "page:2": "65001 mixed scripts"}),
    (r"BM_TextWidenUtf8|BM_TextNarrowUtf8", {"mixed:0": "ASCII", "mixed:1": "mixed scripts"}),
    (r"BM_TextNumericInt|BM_TextFormatNumberInt", {"values:0": "varied lengths", "values:1": "whole range"}),
    (r"BM_TextNumericDouble|BM_TextFormatNumberDouble",
     {"values:0": "three decimals", "values:1": "1e-300 to 1e300"}),
    (r"BM_TextFind", {"case:0": "prose", "case:1": "prose, rare first letter", "case:2": "prose, frequent bytes",
                      "case:3": "Cyrillic", "case:4": "random letters", "case:5": "random bytes"}),
    (r"BM_TextSearchForms",
     {"form:0": "wide find", "form:1": "wide reverse find", "form:2": "caseless find",
      "form:3": "wide caseless find", "form:4": "caseless reverse find", "form:5": "wide caseless reverse find",
      "form:6": "wide find first of", "form:7": "wide compare", "form:8": "wide caseless compare",
      "form:9": "caseless compare"}),
    (r"BM_PostPull_OneThread", {"1": "bursts of 1", "64": "bursts of 64"}),
    (r"BM_Properties", {"16": "16 keys", "1000": "1000 keys"}),
    (r"BM_BitReaderReadDataAligned", {"64": "64 B", "4096": "4 KiB"}),
    (r"BM_BufferPool", {"threads:1": "1 thread", "threads:2": "2 threads"}),
    (r"Format_|Parse_", {"Http": "HTTP", "Iso": "ISO 8601"}),
]

RATE_KEYS = ("bytes_per_second", "items_per_second")
UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


class Result:
    """The medians of one benchmark's repetitions."""

    def __init__(self, name, subsystem, runs):
        self.name = name
        self.subsystem = subsystem
        self.error = next((r.get("error_message", "error") for r in runs if r.get("error_occurred")), None)
        runs = [r for r in runs if not r.get("error_occurred")]
        key = "real_time" if "/real_time" in name else "cpu_time"
        times = [r[key] * UNIT_NS.get(r.get("time_unit", "ns"), 1.0) for r in runs if key in r]
        self.time_ns = statistics.median(times) if times else None
        self.spread = (statistics.pstdev(times) / statistics.mean(times)
                       if len(times) > 1 and statistics.mean(times) > 0 else None)
        self.rate_kind = next((k for k in RATE_KEYS if runs and all(k in r for r in runs)), None)
        self.rate = statistics.median(r[self.rate_kind] for r in runs) if self.rate_kind else None
        standard = {"name", "run_name", "run_type", "repetitions", "repetition_index", "threads",
                    "iterations", "real_time", "cpu_time", "time_unit", "family_index",
                    "per_family_instance_index", "aggregate_name", "aggregate_unit", "label",
                    "error_occurred", "error_message", *RATE_KEYS}
        self.counters = OrderedDict()
        for run in runs:
            for k, v in run.items():
                if k not in standard and isinstance(v, (int, float)):
                    self.counters.setdefault(k, []).append(v)
        self.counters = OrderedDict((k, statistics.median(v)) for k, v in self.counters.items())

    @property
    def counter_only(self):
        return bool(self.counters) and self.rate_kind is None


def load(paths):
    """Results by name in the order they first appear, and the first file's context."""
    runs, subsystems, context = OrderedDict(), {}, None
    for path in paths:
        try:
            with open(path, encoding="utf-8") as f:
                data = json.load(f)
        except (OSError, ValueError) as error:  # a program that crashed leaves half a file
            print(f"bench_report: skipping {path}: {error}", file=sys.stderr)
            continue
        context = context or dict(data.get("context", {}))
        context.setdefault("repetitions", max((b.get("repetitions", 0) for b in data.get("benchmarks", [])),
                                              default=0) or "?")
        exe = os.path.basename(data.get("context", {}).get("executable", "")) or os.path.basename(path)
        subsystem = re.sub(r"^bench_", "", re.sub(r"[-.].*$", "", exe))
        benchmarks = data.get("benchmarks", [])
        iterations = [b for b in benchmarks if b.get("run_type", "iteration") == "iteration"]
        if not iterations:  # only aggregates were written: their medians stand for the runs
            iterations = [b for b in benchmarks if b.get("aggregate_name") == "median"]
        for b in iterations:
            name = b.get("run_name", b["name"]) if b.get("run_type") == "aggregate" else b["name"]
            runs.setdefault(name, []).append(b)
            subsystems.setdefault(name, subsystem)
    results = OrderedDict((n, Result(n, subsystems[n], r)) for n, r in runs.items())
    return results, context or {}


class Row:
    """A Tessera case, the family it belongs to, and its peers (None where one did not run)."""

    def __init__(self, result, label, order, peers):
        self.result, self.label, self.order, self.peers = result, label, order, peers


def natural(name):
    return [int(t) if t.isdigit() else t for t in re.split(r"(\d+)", name)]


def pair(results):
    """The rows in report order, the names that are some case's peer (with their label), and
    the results no entry knows."""
    rows, peer_labels = [], {}
    for order, (label, case, peers) in enumerate(PAIRS):
        for name, result in results.items():
            match = re.fullmatch(case, name)
            if match:
                expanded = [(peer, match.expand(template)) for peer, template in peers.items()]
                for peer, n in expanded:
                    peer_labels.setdefault(n, peer)
                rows.append(Row(result, match.expand(label), order,
                                [(peer, results.get(n)) for peer, n in expanded]))
    rows.sort(key=lambda row: (subsystem_key(row.result.subsystem), row.order, natural(row.result.name)))
    known = {row.result.name for row in rows} | set(peer_labels)
    unknown = sorted((r for n, r in results.items() if n not in known),
                     key=lambda r: (subsystem_key(r.subsystem), natural(r.name)))
    return rows, peer_labels, unknown


def ratio(tessera, peer):
    if peer is None or peer.error or tessera.error or tessera.counter_only or peer.counter_only:
        return None
    if tessera.rate_kind and tessera.rate_kind == peer.rate_kind and peer.rate:
        return tessera.rate / peer.rate
    if tessera.time_ns and peer.time_ns:
        return peer.time_ns / tessera.time_ns
    return None


def subsystem_key(subsystem):
    return (SUBSYSTEM_ORDER.index(subsystem) if subsystem in SUBSYSTEM_ORDER else len(SUBSYSTEM_ORDER),
            subsystem)


def pretty_suffix(name):
    """The arguments of a benchmark name in words: "/page:0/size:1048576" reads "1252, 1 MiB"."""
    suffix = name.split("/", 1)[1] if "/" in name else ""
    words = {}
    for family, meanings in ARGUMENTS:
        if re.match(family, name):
            words.update(meanings)
    parts = []
    for part in suffix.split("/"):
        if not part or part == "real_time" or part.startswith("iterations:"):
            continue
        if part in words:
            parts.append(words[part])
            continue
        key, _, value = part.rpartition(":")
        if value.isdigit() and int(value) >= 1024 and int(value) & (int(value) - 1) == 0:
            v = int(value)
            value = f"{v >> 20} MiB" if v >= 1 << 20 else f"{v >> 10} KiB"
        elif value.isdigit() and key in ("size", "bytes"):
            value = f"{value} B"
        parts.append(value if not key or key in ("size", "bytes") else f"{key} {value}")
    return ", ".join(parts)


def fmt_number(value):
    """Three significant digits without an exponent."""
    return f"{value:.0f}" if value >= 99.95 else f"{value:.1f}" if value >= 9.995 else f"{value:.2f}"


def fmt_scaled(value, units):
    for unit, scale in units:
        if value >= scale * 0.9995:
            return f"{fmt_number(value / scale)} {unit}"
    return f"{fmt_number(value)} {units[-1][0] if units[-1][1] == 1 else ''}".rstrip()


def fmt_time(ns):
    return fmt_scaled(ns, (("s", 1e9), ("ms", 1e6), ("µs", 1e3), ("ns", 1)))


def fmt_measure(result):
    if result.error:
        return f"error: {result.error}"
    if result.rate_kind == "bytes_per_second":
        return fmt_scaled(result.rate, (("GiB/s", 1 << 30), ("MiB/s", 1 << 20), ("KiB/s", 1 << 10), ("B/s", 1)))
    if result.rate_kind == "items_per_second":
        return fmt_scaled(result.rate, (("G items/s", 1e9), ("M items/s", 1e6), ("k items/s", 1e3),
                                        ("items/s", 1)))
    if result.time_ns is not None:
        return f"{fmt_time(result.time_ns)}/call"
    return "—"


def fmt_ratio(r):
    if r is None:
        return "—"
    text = f"{r:.2f}×" if r < 10 else f"{r:.1f}×"
    return f"**{text}**" if r >= 1 else text


def fmt_spread(result):
    return f" ±{result.spread * 100:.0f}%" if result.spread is not None and result.spread >= 0.005 else ""


def header(meta, context, quick):
    lines = ["# Tessera benchmarks", ""]
    if quick:
        lines += ["> **Quick run** (few repetitions, short minimum time) on a machine that may be busy:",
                  "> the numbers are noisy and only show that the report works.", ""]
    cpu = meta.get("cpu") or "unknown CPU"
    cores = meta.get("cores") or context.get("num_cpus", "?")
    mhz = context.get("mhz_per_cpu")
    facts = [
        ("Machine", f"{cpu}, {cores} cores" + (f", {mhz} MHz" if mhz else "")
         + (f" ({meta['kernel']})" if meta.get("kernel") else "")),
        ("Load average (1, 5, 15 min)", f"{meta['load_before']} before, {meta['load_after']} after"
         if meta.get("load_before") else ", ".join(f"{x:.2f}" for x in context.get("load_avg", [])) or "?"),
        ("Date", meta.get("date") or context.get("date", "?")),
        ("Commit", meta.get("commit", "?")),
        ("Compiler", meta.get("compiler", "?") + (f", {meta['build_type']}" if meta.get("build_type") else "")),
        ("Google Benchmark", meta.get("benchmark_version", "?")
         + (f" ({context['library_build_type']} build)" if context.get("library_build_type") else "")),
        ("Repetitions", f"{meta.get('repetitions') or context.get('repetitions', '?')} interleaved at random"
         + (f", minimum time {meta['min_time']} s each" if meta.get("min_time") else "")
         + (f", filter `{meta['filter']}`" if meta.get("filter") else "")),
    ]
    if context.get("cpu_scaling_enabled"):
        facts.append(("Note", "CPU frequency scaling was on"))
    if meta.get("seconds"):
        facts.append(("Run time", f"{int(meta['seconds']) // 60} min {int(meta['seconds']) % 60} s"))
    lines += ["| | |", "|---|---|"] + [f"| {k} | {v} |" for k, v in facts] + [""]
    lines += ["Each ratio is the peer's time over Tessera's for the same work (the medians of the "
              "repetitions): **above 1 Tessera is faster**. Times are CPU time, except for the "
              "benchmarks that run threads, which measure wall time. Tessera's column gives its "
              "throughput where the benchmark counts bytes or items, else its time per call; ±n% is "
              "the spread of its repetitions (coefficient of variation). A peer that did not run "
              "shows —. The chart gives one bar per family of cases and peer: the geometric mean "
              "of the family's ratios, with a dot for each case.", "",
              "![Ratios](report.png)", ""]
    return lines


def main_table(rows, unknown):
    lines = ["## Tessera beside its peers", "",
             "| Subsystem | Case | Tessera | Ratio to each peer |", "|---|---|---|---|"]
    entries = [(row.result, row.label, row.peers) for row in rows if not row.result.counter_only]
    entries += [(r, None, []) for r in unknown if not r.counter_only]
    entries.sort(key=lambda e: subsystem_key(e[0].subsystem))  # stable: keeps the rows' order
    last = None
    for result, label, peers in entries:
        shown = f"**{result.subsystem}**" if result.subsystem != last else ""
        last = result.subsystem
        if label is None:
            case = f"`{result.name}` (unpaired)"
        else:
            args = pretty_suffix(result.name)
            case = label + (f" · {args}" if args else "")
        ratios = " · ".join(f"{peer} {fmt_ratio(ratio(result, p))}" for peer, p in peers) or "—"
        lines.append(f"| {shown} | {case} | {fmt_measure(result)}{fmt_spread(result)} | {ratios} |")
    return lines + [""]


COUNTER_NAMES = OrderedDict([("median_us", "median µs"), ("p99_us", "p99 µs"), ("firings", "firings"),
                             ("timer_thread_cpu_pct", "timer thread CPU %"),
                             ("events_per_notice", "events per notice")])


def counter_table(results, rows, peer_labels, unknown):
    """Each Tessera case with counters, followed by those of its peers not shown yet."""
    shown, seen = [], set()
    for row in rows:
        if row.result.counters:
            shown.append((row.result, row.label + (f" · {pretty_suffix(row.result.name)}"
                                                   if pretty_suffix(row.result.name) else "")))
            for peer, p in row.peers:
                if p is not None and p.counters and p.name not in seen:
                    seen.add(p.name)
                    shown.append((p, f"{peer} (peer)"))
    shown += [(r, f"`{r.name}` (unpaired)") for r in unknown if r.counters]
    if not shown:
        return []
    present = {c for r, _ in shown for c in r.counters}
    columns = [c for c in COUNTER_NAMES if c in present]
    for r, _ in shown:
        columns += [c for c in r.counters if c not in columns]
    lines = ["## Counters", "",
             "What some benchmarks measure besides speed, as medians of the repetitions: the "
             "lateness of a 10 ms periodic timer (firing time minus due time; median and 99th "
             "percentile of its firings), the share of a CPU the timer thread takes, the events "
             "handled per window message.", "",
             "| Subsystem | Benchmark | " + " | ".join(COUNTER_NAMES.get(c, c) for c in columns) + " |",
             "|---|---|" + "---:|" * len(columns)]
    last = None
    for r, label in sorted(shown, key=lambda e: subsystem_key(e[0].subsystem)):
        subsystem = f"**{r.subsystem}**" if r.subsystem != last else ""
        last = r.subsystem
        cells = [fmt_number(r.counters[c]) if c in r.counters else "" for c in columns]
        if r.error:
            cells = [f"error: {r.error}"] + [""] * (len(columns) - 1)
        lines.append(f"| {subsystem} | {label} | " + " | ".join(cells) + " |")
    return lines + [""]


def chart(rows, path, title):
    """One bar per family and peer: the geometric mean of the family's ratios, with each case
    as a dot."""
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    import matplotlib.ticker

    bars = OrderedDict()
    for row in rows:
        for peer, p in row.peers:
            r = ratio(row.result, p)
            if r is not None and r > 0:
                bars.setdefault((row.result.subsystem, row.label, peer), []).append(r)
    if not bars:
        return False
    keys = sorted(bars, key=lambda k: subsystem_key(k[0]))
    subsystems = list(OrderedDict.fromkeys(k[0] for k in keys))
    colors = plt.get_cmap("tab10")
    color = {s: colors(i % 10) for i, s in enumerate(subsystems)}

    ys, y, previous = [], 0.0, None
    for k in keys:
        if previous is not None and k[0] != previous:
            y += 0.8  # a gap between subsystems
        ys.append(y)
        y += 1.0
        previous = k[0]
    values = [math.exp(sum(map(math.log, bars[k])) / len(bars[k])) for k in keys]
    everything = [v for k in keys for v in bars[k]]
    low, high = min(everything + [1.0]), max(everything + [1.0])
    logscale = high / low > 8

    fig, ax = plt.subplots(figsize=(10, 1.4 + 0.27 * (ys[-1] + 1)))
    base = 1.0 if logscale else 0.0
    ax.barh(ys, [v - base for v in values], left=base, height=0.7,
            color=[color[k[0]] for k in keys], alpha=0.85)
    for yy, k in zip(ys, keys):
        if len(bars[k]) > 1:
            ax.scatter(bars[k], [yy] * len(bars[k]), s=10, color="black", zorder=3, linewidths=0)
    for yy, k, v in zip(ys, keys, values):
        text = f"{v:.2g}×" if v < 10 else f"{v:.0f}×"
        if v >= 1:
            ax.annotate(text, (max(bars[k]), yy), xytext=(4, 0), textcoords="offset points",
                        va="center", fontsize=8)
        else:
            ax.annotate(text, (min(bars[k]), yy), xytext=(-4, 0), textcoords="offset points",
                        va="center", ha="right", fontsize=8)
    ax.axvline(1.0, color="black", linewidth=1)
    ax.tick_params(axis="x", which="both", top=True, labeltop=True)
    if logscale:
        ax.set_xscale("log")
        ax.set_xlim(low / 2.5, high * 2.5)
        ticks = [t * 10.0 ** e for e in range(-4, 5) for t in (1, 2, 5)]
        ax.set_xticks([t for t in ticks if low / 2.5 <= t <= high * 2.5])
        ax.xaxis.set_major_formatter(matplotlib.ticker.FuncFormatter(lambda x, _: f"{x:g}"))
        ax.xaxis.set_minor_formatter(matplotlib.ticker.NullFormatter())
    else:
        ax.set_xlim(0, high * 1.2)
    ax.set_yticks(ys)
    ax.set_yticklabels([f"{k[1]} vs {k[2]}" for k in keys], fontsize=8)
    ax.set_ylim(ys[-1] + 0.7, ys[0] - 0.7)
    ax.set_xlabel("peer time ÷ Tessera time (above 1: Tessera faster); bar: geometric mean, dots: each case")
    ax.grid(axis="x", which="both", alpha=0.3)
    handles = [plt.Rectangle((0, 0), 1, 1, color=color[s]) for s in subsystems]
    ax.legend(handles, subsystems, loc="lower right", fontsize=8, framealpha=0.9)
    ax.set_title(title, fontsize=10)
    fig.tight_layout()
    fig.savefig(path, dpi=110)
    plt.close(fig)
    return True


def select(pattern, names):
    """The names that match `pattern` (a leading "-" inverts it, as Google Benchmark's filter
    does) and the peers of the Tessera cases among them, in the order given."""
    negative = pattern.startswith("-")
    regex = re.compile(pattern[1:] if negative else pattern)
    chosen = {n for n in names if bool(regex.search(n)) != negative}
    present = set(names)
    for label, case, peers in PAIRS:
        for name in list(chosen):
            match = re.fullmatch(case, name)
            if match:
                chosen.update(n for n in (match.expand(t) for t in peers.values()) if n in present)
    return [n for n in names if n in chosen]


def ensure_matplotlib():
    """Debian's python3-matplotlib lives with /usr/bin/python3, which another python3 first
    on the PATH (pyenv, a venv) does not see: rerun under it, or go without the chart."""
    if importlib.util.find_spec("matplotlib"):
        return True
    system = "/usr/bin/python3"
    if os.path.realpath(sys.executable) != os.path.realpath(system) and os.access(system, os.X_OK):
        os.execv(system, [system, os.path.abspath(__file__)] + sys.argv[1:])
    print("bench_report: no matplotlib (apt-get install python3-matplotlib): no chart", file=sys.stderr)
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("results", nargs="*", help="Google Benchmark JSON files")
    parser.add_argument("--select", metavar="REGEX",
                        help="print the benchmark names read from stdin that match, with their peers")
    parser.add_argument("--meta", help="machine.json written by scripts/bench.sh")
    parser.add_argument("--out", default="bench", help="folder for REPORT.md and report.png")
    args = parser.parse_args()
    if args.select is not None:
        print("\n".join(select(args.select, sys.stdin.read().split())))
        return
    if not args.results:
        parser.error("no results to report")
    can_chart = ensure_matplotlib()  # may rerun this script under the system's python3

    meta = {}
    if args.meta and os.path.exists(args.meta):
        with open(args.meta, encoding="utf-8") as f:
            meta = json.load(f)
    present = [p for p in args.results if os.path.exists(p) and os.path.getsize(p) > 0]
    for p in set(args.results) - set(present):
        print(f"bench_report: skipping missing or empty {p}", file=sys.stderr)
    if not present:
        sys.exit("bench_report: no results to report")
    results, context = load(present)
    rows, peer_labels, unknown = pair(results)
    quick = meta.get("mode") == "quick"

    os.makedirs(args.out, exist_ok=True)
    title = f"Tessera beside its peers — {meta.get('cpu', context.get('host_name', ''))}, " \
            f"{meta.get('date', context.get('date', ''))[:10]}" + (" (quick run, noisy)" if quick else "")
    has_chart = can_chart and chart(rows, os.path.join(args.out, "report.png"), title)
    lines = header(meta, context, quick)
    if not has_chart:
        lines = [l for l in lines if not l.startswith("![")]
    lines += main_table(rows, unknown) + counter_table(results, rows, peer_labels, unknown)
    with open(os.path.join(args.out, "REPORT.md"), "w", encoding="utf-8") as f:
        f.write("\n".join(lines))
    print(f"bench_report: {len(rows)} Tessera cases, {len(unknown)} unpaired -> "
          f"{os.path.join(args.out, 'REPORT.md')}")


if __name__ == "__main__":
    main()
