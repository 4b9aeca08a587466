"""Sums up gcovr's JSON report by folder; --missing lists what is not covered."""
import json
import sys

with open(sys.argv[1]) as report:
    files = json.load(report)["files"]
missing = "--missing" in sys.argv

folders = {}
for file in sorted(files, key=lambda file: file["file"]):
    counts = folders.setdefault(file["file"].split("/")[0], [0, 0, 0, 0])
    for line in file["lines"]:
        if line.get("gcovr/noncode"):
            continue
        branches = [branch["count"] > 0 for branch in line["branches"] if not branch.get("throw")]
        counts[0] += line["count"] > 0
        counts[1] += 1
        counts[2] += sum(branches)
        counts[3] += len(branches)
        if missing and (line["count"] == 0 or not all(branches)):
            taken = f"{sum(branches)} of {len(branches)} branches"
            print(f'{file["file"]}:{line["line_number"]}: '
                  + (taken if line["count"] else "not executed"))

folders["all"] = [sum(column) for column in zip(*folders.values())]
print(f'{"":12}{"lines":>18}{"branches":>22}')
for folder, (lines, all_lines, taken, all_branches) in folders.items():
    print(f"{folder:12}{lines:7} of {all_lines:5}, {100 * lines / max(all_lines, 1):4.1f} %"
          f"{taken:7} of {all_branches:5}, {100 * taken / max(all_branches, 1):4.1f} %")
