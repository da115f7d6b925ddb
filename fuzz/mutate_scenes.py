#!/usr/bin/env python3
"""Runs the program on scenes that are changed at random, and reports how it ended.

usage: mutate_scenes.py PROGRAM [COUNT] [SEED] [--keep FOLDER] [--jobs N]

Each scene is one of scenes/*.json with one to four changes: numbers that no scene has, values of
other kinds, keys and elements that are missing or twice, and parameters of the schema in places
where nobody expects them. Comments are written between its lines. It is simulated for three frames,
and one of them is rendered, each within a minute. The program may succeed (exit code 0), fail (1)
or refuse (2), with a line that gives the reason. It must not crash, hang, or end without a message:
such scenes are kept in FOLDER, and make the script's exit code 1. The scene without the changes, but
with comments, is saved twice: that must keep all of them and give the same text.
"""
import argparse, collections, concurrent.futures, copy, glob, json, os, random, re, subprocess, tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
NUMBERS = [0, -1, 1, 0.5, -0.5, 1e-300, 1e-12, 1e-3, 7, 1000, 65536, 1e6, 2147483647, -2147483648,
           2147483648, 1e9, 1e12, 1e15, 1e38, 1e39, 1e154, 1e300, 1e308, -1e308]
TEXTS = ["", "x", "v", "meshes/knot.ply", "/", "*", "\u0000", "a" * 5000]
OTHERS = [None, True, False, [], {}, [[]], [0, 0, 0], [1e308, 1e308, 1e308], [1, 2], "text"]
SECONDS = 60


def places(value, path=()):
    """All values of a document, each with its path."""
    yield path, value
    children = value.items() if isinstance(value, dict) else \
        enumerate(value) if isinstance(value, list) else ()
    for key, child in children:
        yield from places(child, path + (key,))


def at(document, path):
    for key in path:
        document = document[key]
    return document


def parameter(schema, rng):
    """A parameter of the schema and a value that is now within and now beyond its bounds."""
    described = [v["properties"] for p, v in places(schema) if isinstance(v, dict)
                 and p[-1:] == ("parameters",) and v.get("properties")]
    name, about = rng.choice(list(rng.choice(described).items()))
    if "enum" in about:
        return name, rng.choice(about["enum"])
    kind = about.get("type")
    low, high = about.get("minimum", -1e6), about.get("maximum", 1e6)
    number = rng.choice(NUMBERS + [low, high, rng.uniform(low, high)])
    return name, {"boolean": rng.random() < 0.5, "integer": int(number), "number": number,
                  "array": [rng.choice(NUMBERS) for _ in range(3)],
                  "string": rng.choice(TEXTS)}.get(kind, number)


def mutate(document, schema, rng):
    path, value = rng.choice([p for p in places(document) if p[0]])
    owner, key = at(document, path[:-1]), path[-1]
    kind = rng.random()
    parameters = [v for p, v in places(document) if p and p[-1] == "parameters"
                  and isinstance(v, dict)]
    if kind < 0.3 and parameters:
        name, new = parameter(schema, rng)
        rng.choice(parameters)[name] = new
    elif kind < 0.4:
        del owner[key]
    elif kind < 0.5 and isinstance(owner, list):
        owner.insert(key, copy.deepcopy(value))
    elif kind < 0.6:
        owner[key] = copy.deepcopy(rng.choice(OTHERS))
    elif isinstance(value, bool):
        owner[key] = not value
    elif isinstance(value, (int, float)):
        owner[key] = rng.choice(NUMBERS + [-value, value * 1.5, value * 100])
    elif isinstance(value, str):
        owner[key] = rng.choice(TEXTS)
    else:
        owner[key] = copy.deepcopy(at(document, rng.choice([p for p, _ in places(document)])))


def commented(text, rng):
    """The text with comments in some of its lines. Its strings have no line breaks."""
    lines = text.split("\n")
    for i in rng.sample(range(len(lines)), min(len(lines), rng.randint(0, 9))):
        lines[i] = rng.choice(["%s // c%d.", "%s/* c%d. */", "%s\n  /* c%d.\n    more */"]) % (lines[i], i)
    return "\n".join(lines)


def saved(program, text, folder):
    """What is wrong with the texts that the program saves, if anything."""
    with open(os.path.join(folder, "whole.json"), "w") as file:
        file.write(text)
    texts = [text]
    for source, target in (".", "once"), ("once", "twice"):
        done = subprocess.run([program, "collect", os.path.join(source, "whole.json"), "--output",
                               target, "--log-file", "log"], cwd=folder, capture_output=True,
                              timeout=SECONDS)
        if done.returncode:
            return "failed: %s" % done.stderr[-300:]
        with open(os.path.join(folder, target, "whole.json")) as file:
            texts.append(file.read())
    kept = [sorted(re.findall(r"c\d+\.", one)) for one in texts]
    return None if texts[1] == texts[2] and kept[0] == kept[1] else "lost or changed comments"


def run(words, folder):
    """What is wrong with the run, if anything, and how it ended."""
    try:
        done = subprocess.run(words, cwd=folder, capture_output=True, timeout=SECONDS)
    except subprocess.TimeoutExpired:
        return "took more than %d s" % SECONDS, "timeout"
    said = b"error:" in done.stderr or b"warning:" in done.stderr
    if done.returncode not in (0, 1, 2):
        return "ended with %d: %s" % (done.returncode, done.stderr[-300:]), "crash"
    if done.returncode and not said:
        return "ended with %d without a word" % done.returncode, "silent"
    return None, "code %d" % done.returncode


def check(program, seed):
    rng = random.Random(seed)
    source = rng.choice(sorted(glob.glob(os.path.join(ROOT, "scenes", "*.json"))))
    with open(source) as file:
        document = json.load(file)
    whole = commented(json.dumps(document, indent=1), rng)
    with open(os.path.join(ROOT, "docs", "scene.schema.json")) as file:
        schema = json.load(file)
    for _ in range(rng.randint(1, 4)):
        mutate(document, schema, rng)
    text = commented(json.dumps(document, indent=1), rng)
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(os.path.join(ROOT, "scenes", "meshes"), os.path.join(folder, "meshes"))
        with open(os.path.join(folder, "scene.json"), "w") as file:
            file.write(text)
        log = ["--threads", "2", "--quiet", "--log-file", os.path.join(folder, "log")]
        volumes = [v.get("name") for _, v in places(document)
                   if isinstance(v, dict) and v.get("type") == "volume"]
        chosen = ["--object", str(volumes[0])] if len(volumes) > 1 else []
        results = [("simulate", *run([program, "simulate", "scene.json", "--frames", "0-2", *chosen,
                                      *log], folder)),
                   ("render", *run([program, "render", "scene.json", "--frames", "2", "--size",
                                    "16x9", "--samples", "1", "--missing", "empty", *log],
                                   folder)),
                   ("save", saved(program, whole, folder), "done")]
    return seed, text, os.path.basename(source), results


def main():
    options = argparse.ArgumentParser()
    options.add_argument("program", type=os.path.abspath)
    options.add_argument("count", type=int, nargs="?", default=100)
    options.add_argument("seed", type=int, nargs="?", default=1)
    options.add_argument("--keep", default="mutated")
    options.add_argument("--jobs", type=int, default=2)
    options = options.parse_args()
    counts, bad = collections.Counter(), 0
    seeds = range(options.seed, options.seed + options.count)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for seed, text, source, results in pool.map(lambda s: check(options.program, s), seeds):
            for verb, wrong, ending in results:
                counts[verb + ": " + ending] += 1
                if not wrong:
                    continue
                bad += 1
                os.makedirs(options.keep, exist_ok=True)
                with open(os.path.join(options.keep, "%d.json" % seed), "w") as file:
                    file.write(text)
                print("scene %d, of %s: %s %s" % (seed, source, verb, wrong), flush=True)
    for ending, count in sorted(counts.items()):
        print("%6d  %s" % (count, ending))
    return 1 if bad else 0


if __name__ == "__main__":
    raise SystemExit(main())
