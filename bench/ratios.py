"""Reads the benchmarks' JSON results and prints our medians, their peers', and the ratios: ratios.py RESULT..."""

import json
import statistics
import sys

# What is measured; our benchmark and the peer's; the ratio of the times, ours to theirs, that is to be reached, or None
# for a peer that is there for orientation.
ROWS = [
    ("intern hot texts, one thread", "HotTessarin/real_time/threads:1", "HotPeer/real_time/threads:1", 1.0),
    ("intern hot texts, two threads", "HotTessarin/real_time/threads:2", "HotPeer/real_time/threads:2", 1 / 3),
    ("intern a million new texts", "NewTessarin/iterations:1", "NewPeer/iterations:1", 1.0),
    *[
        (f"{what} of {size}, against {peer}", f"{row}<OurTable>/{size}", f"{row}<{name}>/{size}", target)
        for row, what in (("Hit", "hit"), ("Miss", "miss"), ("Change", "change"))
        for peer, name, target in (("absl", "AbslMap", 1.5), ("nlohmann", "NlohmannObject", 1.0),
                                   ("RapidJSON", "RapidJsonObject", 1.0))
        for size in (4, 8, 64, 1000, 100000)
        if name == "AbslMap" or (row != "Change" and size >= 8)
    ],
    *[(f"change of {size}, against a find of {peer}", f"Change<OurTable>/{size}", f"Hit<{name}>/{size}", 1.0)
      for peer, name in (("nlohmann", "NlohmannObject"), ("RapidJSON", "RapidJsonObject"))
      for size in (8, 64, 1000, 100000)],
    *[(f"add {size} to none, and drop all", f"Add<OurTable>/{size}", f"Add<AbslMap>/{size}", 1.5)
      for size in (4, 8, 64, 1000, 100000)],
    ("change with one listener, against none", "Change<WatchedTable>/8", "Change<OurTable>/8", 2.0),
    ("fill and close 50 entries", "FillTessarin", "FillNlohmann", 1 / 2),
    ("load JSON, against RapidJSON", "LoadTessarin/50000", "LoadRapidJson/50000", 1 / 0.6),
    ("load JSON, against nlohmann", "LoadTessarin/50000", "LoadNlohmann/50000", 1 / 2.5),
    ("save JSON", "SaveTessarin", "SaveRapidJson", 1.0),
    ("load readable, against our JSON", "LoadReadable/50000", "LoadTessarin/50000", 1 / 1.5),
    *[(f"first load of a process, {what}", f"First{ours}/50000/iterations:1", f"First{peer}/50000/iterations:1", target)
      for what, ours, peer, target in (("JSON, against RapidJSON", "Tessarin", "RapidJson", 1 / 0.6),
                                       ("JSON, against nlohmann", "Tessarin", "Nlohmann", 1 / 2.5),
                                       ("readable, against our JSON", "Readable", "Tessarin", 1 / 1.5))],
    ("load JSON, ten times the size", "LoadTessarin/500000", "LoadTessarin/50000", 20.0),
    ("load readable, ten times the size", "LoadReadable/500000", "LoadReadable/50000", 20.0),
    ("load a flat object, ten times the size", "LoadFlat/100000", "LoadFlat/10000", 20.0),
    *[
        (f"map of a million: {what}, against {peer}", f"{row}<OurMap>{argument}", f"{row}<{name}>{argument}", target)
        for row, what, argument in (("SetMillion", "set", "/0"), ("SetMillion", "set with room", "/1000003"),
                                    ("GetMillion", "hit", "/0"), ("GetMillion", "miss", "/5"),
                                    ("EraseMillion", "erase", ""))
        for peer, name, target in (("std", "StdMap", 1 / 2), ("absl", "AbslMap", 1.0))
        if name == "StdMap" or row != "GetMillion"
    ],
    *[(f"{what}, peer {how}", ours, f"{peer}<{inlined}>", 1.5)
      for what, ours, peer in (("blocks from a pool and back", "BlocksTessarin", "BlocksBoost"),
                               ("runs from a pool", "RunsTessarin", "RunsStd"),
                               ("push to an array", "PushTessarin", "PushStd"))
      for how, inlined in (("inlined", "true"), ("behind a call", "false"))],
    *[(f"configuration, {what}", ours, peer, target)
      for what, ours, peer, target in (
          ("text to read, against libconfig++", "LoadRead/10", "LoadLibconfig/10", 1 / 4),
          ("text to read, against toml++", "LoadRead/10", "LoadToml/10", 1 / 12),
          ("1 MB of text to read, against yaml-cpp", "LoadRead/1", "LoadYaml/1", 1 / 30),
          ("text to edit, against libconfig++", "LoadEdit/10", "LoadLibconfig/10", 1 / 2),
          ("binary, against our text", "LoadBinary/10", "LoadRead/10", 1 / 2.5),
          ("binary, against msgpack", "LoadBinary/10", "UnpackMsgpack/10", None),
          ("binary, against a check of FlexBuffers", "LoadBinary/10", "CheckFlexBuffers/10", None),
          ("save binary, against a load of text", "SaveBinary/10", "LoadRead/10", 2.0),
          ("save text, against a load of text", "SaveText/10", "LoadRead/10", 1.0))],
    *[(f"first load of a process, {what}", f"First{ours}/10/iterations:1", f"First{peer}/10/iterations:1", target)
      for what, ours, peer, target in (("configuration, libconfig++", "Read", "Libconfig", 1 / 4),
                                       ("configuration, toml++", "Read", "Toml", 1 / 12),
                                       ("configuration, yaml-cpp", "Read", "Yaml", 1 / 30),
                                       ("to edit, libconfig++", "Edit", "Libconfig", 1 / 2))],
    *[(f"{what} of {size} in {form}, against {peer}", f"{row}<{ours}>/{size}", f"{row}<{name}>/{size}", target)
      for row, what in (("Find", "find"), ("FindNone", "miss"))
      for form, ours in (("text", "TextTable"), ("binary", "BinaryTable"))
      for peer, name, target in (("nlohmann", "NlohmannObject", 1.0), ("FlexBuffers", "FlexMap", 1.0),
                                 ("absl", "AbslMap", 2.0))
      for size in (8, 64, 1000, 100000)
      if name != "AbslMap" or size <= 1000],
    *[(f"configuration, {what}, {size // 10} to {size} MB", f"{row}/{size}", f"{row}/{size // 10}", 11.0)
      for what, row in (("text to read", "LoadRead"), ("text to edit", "LoadEdit"), ("binary", "LoadBinary"),
                        ("save binary", "SaveBinary"), ("save text", "SaveText"))
      for size in (10, 100)],
    *[(f"push and pop a command, {what}, {waiting} waiting", f"PushPop<CommandQueue, {same}>/{waiting}",
       f"PushPop<{peer}, {same}>/{waiting}", target)
      for what, same, peer, target in (("against a deque of structs", "true", "DequeOfStructs", 1.0),
                                       ("that deque behind calls", "true", "Called<DequeOfStructs>", None),
                                       ("against a deque of vectors", "false", "DequeOfVectors", 1 / 2.5))
      for waiting in (0, 100, 10000)],
    *[(f"events from {producers} threads, against {what}", f"Deliver<Exchanged>/{producers}/real_time",
       f"Deliver<{peer}>/{producers}/real_time", target)
      for what, peer, target in (("swapped vectors", "SwappedVectors", 1.0),
                                 ("moodycamel in bulk", "ConcurrentQueue", 1 / 1.5))
      for producers in (1, 2, 4)],
    *[(f"tab file of {size} MB, against {what}", f"OpenTabFile/{size}/0", f"{peer}/{size}", target)
      for what, peer, target in (("memchr by hand", "OpenByHand", 1.0), ("libcsv", "ParseLibcsv", 1 / 8))
      for size in (1, 10, 100)],
    *[(f"{what} {keys} keys in {how}, against {peer}", f"{row}Keys<SetterTable, Order::k{order}>/{keys}/manual_time",
       f"{row}Keys<{store}, Order::k{base}>/{keys}/manual_time", target)
      for row, what, friendly in (("Add", "add", "Ascending"), ("Remove", "remove", "Descending"))
      for order, how in (("Ascending", "ascending order"), ("Descending", "descending order"), ("None", "no order"))
      for peer, store, base, target in (("absl", "HashMap", "None", 6.0), ("at the end", "SetterTable", friendly, 4.0))
      for keys in (10000, 100000, 1000000)
      if (store, order) != ("SetterTable", friendly)],
    *[(f"four changes around {kept} entries, once 100,000", f"CrossAt<true>/{kept}", f"CrossAt<false>/{kept}", 4.0)
      for kept in (8, 512, 1024)],
]

# Hostile input, against friendly input of the same size.
ROWS += [(f"hostile keys, {what}: {how}", f"{form}/{attack}/Hostile{once}", f"{form}/{attack}/Friendly{once}", 4.0)
         for form, what, once in (("Json", "load JSON", "/iterations:1"), ("Text", "load text to read", "/iterations:1"),
                                  ("Save", "text to binary", "/iterations:1"), ("Find", "find none", ""))
         for attack, how in (("OneHash", "all of one hash"), ("SmallGroups", "groups of one hash"),
                             ("LateDifference", "long, of one hash"), ("Clusters", "addresses that cluster"))
         if form != "Find" or attack == "OneHash"]
ROWS.append(("hostile defaults, load text to edit", "Edit/Defaults/Hostile", "Edit/Defaults/Friendly", 4.0))
# ---- Configuration texts, edited trees and tab files
TEXT_SHAPES = ("Tables", "ClosedTables", "Arrays", "ArraysOfTwo", "TablesInArray", "TablesInArrays", "ArraysInArray",
               "TablesAndArrays", "Elements", "Entries", "Quotes", "Comments")
GRID_SHAPES = ("WideAndEmpty", "WideAndUncounted", "Empty", "Tabs", "TwoColumns", "Surplus")
ROWS += [
    *[(f"50,000 edited Units removed, {where}, against {what}", f"RemoveUnits{row}/50000", peer, 4.0)
      for where, row in (("from the front", "Front"), ("from the middle", "Middle"))
      for what, peer in (("adding", "AddUnits/50000"),)],
    ("50,000 edited Units removed, anywhere, against adding", "RemoveUnitsAnywhere/50000", "AddUnits/50000", None),
    ("a Unit added and the first removed, against adding", "AddAndRemoveUnits/50000", "AddUnits/50000", 8.0),
]
# The most memory of a load that is the first of its process, for each byte of the file, and its bound.
BYTES_PER_BYTE = [
    *[(f"text of {shape}, to {access.lower()}", f"FirstHostileText{access}/{shape}/iterations:1", bound)
      for shape in TEXT_SHAPES for access, bound in (("Read", 60.0), ("Edit", 100.0))],
    *[(f"tab file of {shape}", f"FirstHostileGrid/{shape}/iterations:1", 64.0) for shape in GRID_SHAPES],
]

# What a first load of a process has taken of memory at its most; its benchmark.
MEMORY = [(f"most memory of 10 MB of configuration, {what}", f"First{row}/10/iterations:1")
          for what, row in (("to read", "Read"), ("to edit", "Edit"), ("libconfig++", "Libconfig"),
                            ("toml++", "Toml"), ("yaml-cpp", "Yaml"))]

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(paths):
    """Benchmark name to the median of all its runs in nanoseconds: real time for several threads, the time
    that a benchmark measures itself, else CPU time.
    A second map has the memory, of those that report it; a third the memory for each byte of input."""
    runs, peaks, per_byte = {}, {}, {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for result in json.load(file)["benchmarks"]:
                if result["run_type"] == "iteration":
                    time = result["real_time" if "_time" in result["run_name"] else "cpu_time"]
                    runs.setdefault(result["run_name"], []).append(time * UNITS[result["time_unit"]])
                    if "peak" in result:
                        peaks.setdefault(result["run_name"], []).append(result["peak"])
                    if "peak_per_byte" in result:
                        per_byte.setdefault(result["run_name"], []).append(result["peak_per_byte"])
    return [{name: statistics.median(values) for name, values in found.items()} for found in (runs, peaks, per_byte)]


def main():
    found, peaks, per_byte = medians(sys.argv[1:])
    print(f"{'':56}{'ours':>14}{'peer':>14}{'ratio':>8}{'target':>8}")
    for label, ours, peer, target in ROWS:
        if ours not in found or peer not in found:
            continue
        ratio = found[ours] / found[peer]
        goal = f"{'-':>8}" if target is None else f"{target:8.2f}"
        verdict = "" if target is None or ratio <= target else "  missed"
        print(f"{label:56}{found[ours]:12.1f}ns{found[peer]:12.1f}ns{ratio:8.2f}{goal}{verdict}")
    for label, name in MEMORY:
        if name in peaks:
            print(f"{label:56}{peaks[name] / 1e6:12.1f}MB")
    for label, name, bound in BYTES_PER_BYTE:
        if name in per_byte:
            verdict = "" if per_byte[name] <= bound else "  missed"
            print(f"{label:56}{per_byte[name]:12.1f} bytes a byte{bound:18.1f}{verdict}")


main()
