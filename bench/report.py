# SPDX-License-Identifier: MIT
"""Tables, curves and checks from what scripts/bench measured.

  report.py callgrind NAMES PROFILE         instructions of each work, as JSON, from callgrind's dumps
  report.py armhf TEXT                      instructions of each work, as JSON, from the counts of two runs
  report.py panel COST EXCHANGES            what a run of modbus-panel cost, as JSON
  report.py hosts RESULTS [FILE]            prints the table of hosts, and puts it between its marks of a document
  report.py tables RESULTS                  prints every table as Markdown and writes tables.md and *.dat
  report.py document RESULTS FILE           puts the tables between the marks of a document
  report.py check RESULTS LIMITS            fails when a count passes its limit
"""
import json
import pathlib
import re
import sys

GOALS = [  # name, what is compared, limit, and how it is told
    ("exchange/read_125_registers/shared", None, 1.5, "exchange of 125 registers, against its floor"),
    ("exchange/read_1_register/shared", None, 3.0, "exchange of 1 register, against its floor"),
    ("rebuild/100000_variables/1_station", "rebuild/10000_variables/1_station", 13.0,
     "rebuild of 100,000 variables of 1 station, against 10,000"),
    ("rebuild/100000_variables/32_stations", "rebuild/10000_variables/32_stations", 13.0,
     "rebuild of 100,000 variables of 32 stations, against 10,000"),
    ("look_up/100000_records", "look_up/100_records", 3.0, "look-up among 100,000 records, against 100"),
    ("panel_read/125_registers/shared", None, 1.5, "screen reading 125 registers, against its floor"),
    ("exchange/read_125_registers/per_station", None, 2.0, "exchange of 125 registers, per station, against its floor"),
    ("exchange/read_2000_bits/per_station", None, 2.0, "exchange of 2,000 bits, per station, against its floor"),
    ("panel_read/16_registers/per_station", None, 2.5, "screen reading 16 registers, per station, against its floor"),
    ("panel_read/125_registers/per_station", None, 2.5, "screen reading 125 registers, per station, against its floor"),
    ("panel_read/125_32_bit_values/per_station", None, 2.5,
     "screen reading 125 32-bit values, per station, against its floor"),
    ("panel_write/queued_behind_1023", None, 4.0, "write behind 1,023 others, against its floor"),
    ("panel_once_read/queued_behind_1023", None, 4.0, "one-shot read behind 1,023 others, against its floor"),
]


def load(folder, name):
    return json.loads((folder / (name + ".json")).read_text())


def medians(folder, name):
    """Nanoseconds of CPU time, by the name of the work."""
    unit = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    return {b["run_name"]: b["cpu_time"] * unit[b["time_unit"]]
            for b in load(folder, name)["benchmarks"] if b.get("aggregate_name") == "median"}


def table(heads, rows):
    lines = ["| " + " | ".join(heads) + " |", "|" + "|".join(["---"] + ["---:"] * (len(heads) - 1)) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def told(name):
    return name.replace("_", " ").replace("/", ", ", 1).replace("/", ", ")


def amount(nanoseconds):
    for limit, divisor, unit in ((1e4, 1, "ns"), (1e7, 1e3, "µs"), (1e99, 1e6, "ms")):
        if nanoseconds < limit:
            value = nanoseconds / divisor
            return f"{value:.0f} {unit}" if value >= 100 else f"{value:.1f} {unit}"


def ratio(values, name, other):
    return values[name] / values[other] if other in values else None


def goals_table(times, instructions):
    rows = []
    for name, other, limit, text in GOALS:
        other = other or "floor/" + name
        by_time = ratio(times, name, other)
        floors = ratio(times, "floor/" + name, "floor/" + other) if "floor/" + other in times else 1
        rows.append([text, f"{limit:g}", f"{by_time:.2f}", "met" if by_time <= limit else "not met",
                     f"{floors:.2f}", f"{ratio(instructions, name, other):.2f}"])
    return table(["goal", "at most", "time", "", "the floor's", "instructions"], rows)


def works_table(times, instructions, kinds):
    rows = []
    for name in instructions:
        if not name.startswith(kinds):
            continue
        floor = "floor/" + name
        rows.append([told(name), amount(times[name]), amount(times[floor]), f"{ratio(times, name, floor):.2f}",
                     f"{instructions[name]:,.0f}", f"{ratio(instructions, name, floor):.2f}"])
    return table(["work", "time", "floor", "ratio", "instructions", "ratio"], rows)


def allocations_table(folder):
    rows = []
    for entry in load(folder, "allocations"):
        if entry["name"].startswith("floor/") or entry["per_step"] == 0:
            continue
        kinds = {}
        for kind in entry["kinds"]:
            kind = kind.split(",")[0]
            kinds[kind] = kinds.get(kind, 0) + 1
        rows.append([told(entry["name"]), f"{entry['per_step']:g}",
                     ", ".join(f"{count} {kind}" for kind, count in kinds.items())])
    return table(["work", "allocations", "what for"], rows)


def memory_table(folder):
    return table(["variables", "stations", "requests", "kept, bytes a variable", "peak, bytes a variable"],
                 [[f"{m['variables']:,}", str(m["stations"]), f"{m['requests']:,}",
                   f"{m['kept_per_variable']:.1f}", f"{m['peak_per_variable']:.1f}"]
                  for m in load(folder, "memory")])


def waits_of(folder, library):
    """The medians over all turns of that library, by the name of the wait and the counter."""
    runs = {}
    for file in folder.glob(f"waits-{library}-[0-9]*.json"):
        for b in json.loads(file.read_text())["benchmarks"]:
            name = b["run_name"].replace("/iterations:1", "").replace("panel_wait/", "")
            for key in ("median_ns", "p999_ns", "worst_ns"):
                runs.setdefault((name, key), []).append(b[key])
    return {key: sorted(values)[len(values) // 2] for key, values in runs.items()}


def waits_table(folder):
    now, before = waits_of(folder, "bench"), waits_of(folder, "bench-reference")
    rows = []
    for name in dict.fromkeys(name for name, _ in now):
        row = [told(name)] + [amount(now[name, key]) for key in ("median_ns", "p999_ns", "worst_ns")]
        if before:
            row += [amount(before[name, key]) for key in ("median_ns", "p999_ns")]
            row += [f"{now[name, 'p999_ns'] / before[name, 'p999_ns']:.2f}"]
        rows.append(row)
    heads = ["call, load", "median", "99.9th percentile", "worst"]
    return table(heads + (["median before", "99.9th before", "ratio"] if before else []), rows)


def armhf_table(folder):
    counts = load(folder, "armhf")
    return table(["work", "instructions", "floor", "ratio"],
                 [[told(name), f"{count:,.0f}", f"{counts['floor/' + name]:,.0f}",
                   f"{ratio(counts, name, 'floor/' + name):.2f}"]
                  for name, count in counts.items() if "floor/" + name in counts])


def values_table(folder):
    return table(["values", "record and its place in the list", "value bytes", "index"],
                 [[f"{v['values']:,}", f"{v['record']:.1f}", f"{v['value']:.1f}", f"{v['index']:.1f}"]
                  for v in load(folder, "values")])


def plant_table(folder):
    return table(["image", "block", "time-out", "retries", "requests", "no dead station", "5 % dead", "lost",
                  "dead switched off", "lost", "two links"],
                 [[told(p["image"]), str(p["block"]), f"{p['time_out']} ms", str(p["retries"]),
                   f"{p['requests']:,}", f"{p['live']:.1f} s", f"{p['kept']:.1f} s", f"{100 * p['kept_lost']:.0f} %",
                   f"{p['off']:.1f} s", f"{100 * p['off_lost']:.1f} %", f"{p['two_links']:.1f} s"]
                  for p in load(folder, "plant")["plans"]])


def plant_cost_table(folder):
    counts, plant = load(folder, "armhf"), load(folder, "plant")
    requests = {p["image"]: p["requests"] for p in plant["plans"] if p["block"] == 125}
    rows = []
    for memory in plant["memory"]:
        image = memory["image"]
        count = counts["plant/pass/" + image]
        rows.append([told(image), f"{count / 1e6:.1f} million", f"{count / requests[image]:,.0f}",
                     f"{memory['kept'] / 1024:,.0f} KiB", f"{memory['kept_per_register']:.1f}"])
    return table(["image", "instructions a pass", "for each exchange", "heap kept", "bytes a register"], rows)


def hosts_table(folder):
    """The medians over all turns. Share: of what Qt's class takes beyond bare sockets, what this client does."""
    rows = []
    for registers in (1, 100):
        runs = {}
        for file in sorted(folder.glob(f"hosts-{registers}-*.json")):
            client = file.stem.split("-", 2)[2].rsplit("-", 1)[0]
            runs.setdefault(client, []).append(json.loads(file.read_text()))
        middle = {(client, key): sorted(turn[key] for turn in turns)[len(turns) // 2]
                  for client, turns in runs.items() for key in turns[0]}
        bare, qt = (middle[client, "cpu_microseconds"] for client in ("bare socket", "Qt client class"))
        for client in runs:
            cost = middle[client, "cpu_microseconds"]
            rows.append([f"{registers} register{'s' if registers > 1 else ''}, {client}",
                         f"{middle[client, 'exchanges_per_second']:,.0f}", f"{cost:.2f}",
                         f"{(cost - bare) / (qt - bare):.2f}" if client != "bare socket" else ""])
    return table(["reads, client", "exchanges a second", "CPU µs for each", "share of Qt's excess"], rows)


def growth_table(times, instructions):
    rows = []
    for name in instructions:
        if not name.startswith(("rebuild/", "look_up/")):
            continue
        share = int(name.split("/")[1].split("_")[0]) if "rebuild" in name else 1
        floor = "floor/" + name
        rows.append([told(name), amount(times[name]), amount(times[name] / share), amount(times[floor] / share),
                     f"{instructions[name] / share:,.0f}", f"{instructions[floor] / share:,.0f}"])
    return table(["work", "time", "for each", "floor", "instructions for each", "floor"], rows)


def write_curves(folder, times):
    for kind, pick in (("rebuild-1", r"rebuild/(\d+)_variables/1_station$"),
                       ("rebuild-32", r"rebuild/(\d+)_variables/32_stations$"),
                       ("look-up", r"look_up/(\d+)_records$")):
        points = sorted((int(m[1]), times[name], times["floor/" + name])
                        for name in times if (m := re.match(pick, name)))
        (folder / (kind + ".dat")).write_text("".join("%d %g %g\n" % point for point in points))


def all_tables(folder):
    times = medians(folder, "times") | medians(folder, "growth")
    instructions = load(folder, "instructions")
    write_curves(folder, times)
    return {"machine": (folder / "machine.txt").read_text().strip(),
            "goals": goals_table(times, instructions),
            "exchanges": works_table(times, instructions, "exchange/"),
            "panel": works_table(times, instructions, ("panel_read/", "panel_write/", "panel_once_read/")),
            "checksums": works_table(times, instructions, "checksum/"),
            "growth": growth_table(times, instructions),
            "allocations": allocations_table(folder),
            "memory": memory_table(folder),
            "waits": waits_table(folder),
            "armhf": armhf_table(folder),
            "values": values_table(folder),
            "plant": plant_table(folder),
            "plant-cost": plant_cost_table(folder),
            "hosts": hosts_table(folder)}


def callgrind(names, profile):
    counts = {}
    for part, line in enumerate(pathlib.Path(names).read_text().splitlines(), 1):
        name, steps = line.split()
        total = re.search(r"^totals: (\d+)", pathlib.Path(f"{profile}.{part}").read_text(), re.M)
        counts[name] = int(total[1]) / int(steps)
    return counts


def armhf(text):
    """Lines NAME STEPS INSTRUCTIONS, two for each work: what both runs spend on starting falls out."""
    runs = {}
    for line in pathlib.Path(text).read_text().splitlines():
        name, steps, instructions = line.split()
        runs.setdefault(name, []).append((int(steps), int(instructions)))
    return {name: (high[1] - low[1]) / (high[0] - low[0]) for name, (low, high) in runs.items()}


def panel(cost, exchanges):
    seconds, user, system = map(float, pathlib.Path(cost).read_text().split())
    return {"exchanges_per_second": int(exchanges) / seconds, "cpu_microseconds": (user + system) * 1e6 / int(exchanges)}


def document(tables, file):
    text = pathlib.Path(file).read_text()
    for name, content in tables.items():
        mark = re.compile(rf"(<!-- bench: {name} -->\n).*?(<!-- end -->)", re.S)
        if not mark.search(text):
            sys.exit(f"report: {file} has no place for {name}")
        text = mark.sub(lambda m: m[1] + content + "\n" + m[2], text)
    pathlib.Path(file).write_text(text)


def check(folder, limits):
    faults = []

    def hold(what, value, limit):
        print(f"{what}: {value:.2f}, at most {limit}")
        if value > limit:
            faults.append(what)

    allocations = {entry["name"]: entry["per_step"] for entry in load(folder, "allocations")}
    instructions = load(folder, "instructions")
    for name, limit in limits["allocations"].items():
        hold("allocations, " + told(name), allocations[name], limit)
    for name, limit in limits["instruction_ratios"].items():
        hold("instructions against the floor, " + told(name),
             ratio(instructions, name, "floor/" + name), limit)
    for name, other, limit in limits["instruction_growth"]:
        hold(f"instructions, {told(name)} against {told(other)}", ratio(instructions, name, other), limit)
    for entry in load(folder, "memory"):
        hold(f"peak bytes a variable, {entry['variables']} variables, {entry['stations']} stations",
             entry["peak_per_variable"], limits["peak_bytes_per_variable"])
    if faults:
        sys.exit("bench: past the limit: " + "; ".join(faults))


def main(words):
    folder = pathlib.Path(words[1])
    if words[0] == "callgrind":
        print(json.dumps(callgrind(*words[1:3]), indent=1))
    elif words[0] == "armhf":
        print(json.dumps(armhf(words[1]), indent=1))
    elif words[0] == "panel":
        print(json.dumps(panel(*words[1:3])))
    elif words[0] == "hosts":
        tables = {"hosts": hosts_table(folder)}
        print(tables["hosts"])
        if len(words) > 2:
            document(tables, words[2])
    elif words[0] == "tables":
        text = "\n\n".join(f"## {name}\n\n{content}" for name, content in all_tables(folder).items()) + "\n"
        (folder / "tables.md").write_text(text)
        print(text)
    elif words[0] == "document":
        document(all_tables(folder), words[2])
    elif words[0] == "check":
        check(folder, json.loads(pathlib.Path(words[2]).read_text()))


main(sys.argv[1:])
