"""Whether two notebooks show the same: same_outputs.py NOTEBOOK NOTEBOOK

Pictures need only be there: they differ with the program that draws them."""
import json
import sys


def outputs(path):
    with open(path, encoding="utf-8") as file:
        cells = json.load(file)["cells"]
    shown = []
    for cell in cells:
        for output in cell.get("outputs", []):
            assert output["output_type"] != "error", "".join(output["traceback"])
            data = {kind: "".join(text) for kind, text in output["data"].items()}
            if "image/svg+xml" in data:
                data = {kind: "<svg" in text or text for kind, text in data.items()}
            shown.append(("".join(cell["source"]), output["output_type"], data))
    return shown


kept, found = outputs(sys.argv[1]), outputs(sys.argv[2])
for old, new in zip(kept, found):
    if old != new:
        sys.exit("%s\nkept:  %s\nfound: %s" % (old[0], old[1:], new[1:]))
assert kept and len(kept) == len(found), "%d and %d outputs" % (len(kept), len(found))
