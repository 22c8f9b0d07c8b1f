#!/usr/bin/env python3
"""Writes a mesh, an OBJ file of triangles, in more triangles: the same surface, each cut into parts x parts."""

import argparse
import json
import struct

import numpy


def read_obj(file):
    """Places (n x 3) and corners (m x 3) of an OBJ file of triangles without anything else."""
    places, corners = [], []
    with open(file, encoding="ascii") as stream:
        for line in stream:
            words = line.split()
            if words and words[0] == "v":
                places.append([float(word) for word in words[1:4]])
            elif words and words[0] == "f":
                corners.append([int(word) - 1 for word in words[1:4]])
    return numpy.array(places), numpy.array(corners)


def smooth_normals(places, corners):
    """By vertex: the mean of the triangles about it, weighted by their area."""
    a, b, c = (places[corners[:, i]] for i in range(3))
    faces = numpy.cross(b - a, c - a)
    sums = numpy.zeros_like(places)
    for i in range(3):
        numpy.add.at(sums, corners[:, i], faces)
    return of_unit_length(sums)


def of_unit_length(vectors):
    lengths = numpy.linalg.norm(vectors, axis=1, keepdims=True)
    return vectors / numpy.where(lengths > 0, lengths, 1)


def cut(places, normals, corners, parts):
    """The places, normals and corners of the finer mesh. Neighbours share the vertices on the edge between them."""
    ends, edge_of = numpy.unique(
        numpy.sort(corners[:, [[0, 1], [1, 2], [2, 0]]].reshape(-1, 2), axis=1), axis=0, return_inverse=True
    )
    edge_of = edge_of.reshape(-1, 3)
    old, triangles = len(places), len(corners)
    inside = [(i, j) for i in range(1, parts) for j in range(1, parts - i)]
    steps = numpy.arange(1, parts)[None, :, None] / parts

    def spread(values):
        along = values[ends[:, 0], None] * (1 - steps) + values[ends[:, 1], None] * steps
        within = [
            (values[corners[:, 0]] * (parts - i - j) + values[corners[:, 1]] * i + values[corners[:, 2]] * j) / parts
            for i, j in inside
        ]
        within = numpy.stack(within, axis=1) if within else numpy.empty((triangles, 0, 3))
        return numpy.concatenate([values, along.reshape(-1, 3), within.reshape(-1, 3)])

    def on_edge(edge, steps_from_first):
        first, second = corners[:, edge], corners[:, (edge + 1) % 3]
        slot = numpy.where(first < second, steps_from_first, parts - steps_from_first) - 1
        return old + edge_of[:, edge] * (parts - 1) + slot

    def vertex(i, j):  # i steps from corner 0 towards corner 1, j towards corner 2
        if (i, j) in ((0, 0), (parts, 0), (0, parts)):
            return corners[:, 1 if i else 2 if j else 0]
        if j == 0:
            return on_edge(0, i)
        if i + j == parts:
            return on_edge(1, j)
        if i == 0:
            return on_edge(2, parts - j)
        return old + len(ends) * (parts - 1) + numpy.arange(triangles) * len(inside) + inside.index((i, j))

    finer = []
    for i in range(parts):
        for j in range(parts - i):
            finer.append(numpy.stack([vertex(i, j), vertex(i + 1, j), vertex(i, j + 1)], axis=1))
            if i + j < parts - 1:
                finer.append(numpy.stack([vertex(i + 1, j), vertex(i + 1, j + 1), vertex(i, j + 1)], axis=1))
    # Those of one old triangle stay together, as in meshes that people make.
    return spread(places), spread(normals), numpy.stack(finer, axis=1).reshape(-1, 3)


def write_glb(places, normals, corners, file):
    """Binary glTF 2.0: what large meshes travel in."""
    parts = [places.astype("<f4"), of_unit_length(normals).astype("<f4"), corners.astype("<u4")]
    views, start = [], 0
    for part in parts:
        views.append({"buffer": 0, "byteOffset": start, "byteLength": part.nbytes})
        start += part.nbytes
    vectors = {"componentType": 5126, "count": len(places), "type": "VEC3"}  # 5126: float
    bounds = {"min": parts[0].min(axis=0).tolist(), "max": parts[0].max(axis=0).tolist()}
    about = {
        "asset": {"version": "2.0"},
        "scene": 0,
        "scenes": [{"nodes": [0]}],
        "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2}]}],
        "accessors": [
            {"bufferView": 0} | vectors | bounds,
            {"bufferView": 1} | vectors,
            {"bufferView": 2, "componentType": 5125, "count": corners.size, "type": "SCALAR"},  # 5125: unsigned int
        ],
        "bufferViews": views,
        "buffers": [{"byteLength": start}],
    }
    text = json.dumps(about).encode()
    text += b" " * (-len(text) % 4)
    with open(file, "wb") as stream:
        stream.write(struct.pack("<4sII", b"glTF", 2, 12 + 8 + len(text) + 8 + start))
        stream.write(struct.pack("<I4s", len(text), b"JSON") + text)
        stream.write(struct.pack("<I4s", start, b"BIN\0"))
        for part in parts:
            stream.write(part.tobytes())


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("obj", help="the mesh")
    parser.add_argument("glb", help="the file to write")
    parser.add_argument("parts", type=int, help="that every edge is cut into")
    words = parser.parse_args()
    places, corners = read_obj(words.obj)
    write_glb(*cut(places, smooth_normals(places, corners), corners, words.parts), words.glb)


if __name__ == "__main__":
    main()
