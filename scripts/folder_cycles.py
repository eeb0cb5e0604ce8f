#!/usr/bin/env python3
"""Reports every cycle between the folders of a layer of src (folder A includes B and B includes
A, directly or through other folders), with the include lines that make it. A subfolder counts as
part of its folder (core/fs/operations is core/fs).

Usage: scripts/folder_cycles.py [--graph] [LAYER ...]     LAYER: core (the default), ui
Exits 1 when a cycle remains, so that it runs as a check.
"""
import argparse
import os
import re
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "src")
INCLUDE = re.compile(r'^\s*#\s*include\s+"((?:core|ui)/[^"]+)"', re.M)


def folder_of(path):
    # "core/fs/operations/X.h" belongs to "core/fs": subfolders count with their parent.
    parts = path.split("/")
    return "/".join(parts[:2])


def edges(layers):
    result = {}
    for layer in layers:
        for dirpath, _, files in os.walk(os.path.join(ROOT, layer)):
            for name in files:
                if not name.endswith((".h", ".cpp")):
                    continue
                full = os.path.join(dirpath, name)
                source = folder_of(os.path.relpath(full, ROOT))
                with open(full, encoding="utf-8") as f:
                    text = f.read()
                for include in INCLUDE.findall(text):
                    target = folder_of(include)
                    if target != source:
                        result.setdefault(source, {}).setdefault(target, []).append(
                            os.path.relpath(full, ROOT) + " -> " + include)
    return result


def strongly_connected(graph):
    # Tarjan's algorithm over the folder graph.
    index, low, stack, on_stack, components = {}, {}, [], set(), []
    counter = [0]

    def visit(node):
        index[node] = low[node] = counter[0]
        counter[0] += 1
        stack.append(node)
        on_stack.add(node)
        for nxt in graph.get(node, {}):
            if nxt not in index:
                visit(nxt)
                low[node] = min(low[node], low[nxt])
            elif nxt in on_stack:
                low[node] = min(low[node], index[nxt])
        if low[node] == index[node]:
            component = []
            while True:
                top = stack.pop()
                on_stack.discard(top)
                component.append(top)
                if top == node:
                    break
            if len(component) > 1:
                components.append(sorted(component))

    nodes = set(graph) | {t for targets in graph.values() for t in targets}
    for node in sorted(nodes):
        if node not in index:
            visit(node)
    return components


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--graph", action="store_true", help="print every folder dependency")
    parser.add_argument("layers", nargs="*",
                        help="the layers whose folders are checked (their includes of other layers count)")
    args = parser.parse_args()

    layers = args.layers or ["core"]
    for layer in layers:
        if layer not in ("core", "ui"):
            parser.error("unknown layer %s (core or ui)" % layer)
    graph = edges(layers)
    if args.graph:
        for source in sorted(graph):
            print(source, "->", ", ".join(sorted(graph[source])))

    found = False
    for component in strongly_connected(graph):
        found = True
        print("cycle:", " <-> ".join(component))
        for source in component:
            for target in sorted(graph.get(source, {})):
                if target in component:
                    for line in graph[source][target]:
                        print("   ", line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
