"""Runs inside Blender: builds a scene shaded by Cycles' own ambient occlusion node alone, and renders it.

    blender -b --factory-startup -P bench/blender_scene.py -- JOB.json

JOB.json is what bench/with_blender.py writes: where things stand, in metres, in left-handed axes with +Y up, as
docs/scene.md has them. Blender's axes are right-handed with +Z up: that swaps Y and Z."""

import json
import math
import sys

import bpy
from mathutils import Matrix, Vector


def swapped(place):
    return Vector((place[0], place[2], place[1]))


def occlusion_material(rays, distance):
    material = bpy.data.materials.new("Occlusion")
    material.use_nodes = True
    tree = material.node_tree
    tree.nodes.clear()
    occlusion = tree.nodes.new("ShaderNodeAmbientOcclusion")
    occlusion.samples = rays
    occlusion.inputs["Distance"].default_value = distance
    emission = tree.nodes.new("ShaderNodeEmission")
    output = tree.nodes.new("ShaderNodeOutputMaterial")
    tree.links.new(occlusion.outputs["AO"], emission.inputs["Color"])
    tree.links.new(emission.outputs["Emission"], output.inputs["Surface"])
    return material


def add_objects(job, material):
    # Files are right-handed with +Y up.
    bpy.ops.wm.obj_import(filepath=job["mesh"], forward_axis="NEGATIVE_Z", up_axis="Y")
    bunny = bpy.context.selected_objects[0]
    turn = Matrix.Rotation(-math.radians(job["heading"]), 4, "Z")
    bunny.matrix_world = Matrix.Translation(swapped(job["position"])) @ turn @ bunny.matrix_world
    bunny.data.polygons.foreach_set("use_smooth", [True] * len(bunny.data.polygons))
    bpy.ops.mesh.primitive_plane_add(size=1)
    ground = bpy.context.active_object
    ground.scale = (job["ground"]["width"], job["ground"]["depth"], 1)
    for thing in (bunny, ground):
        thing.data.materials.clear()
        thing.data.materials.append(material)


def add_camera(job):
    data = bpy.data.cameras.new("Main")
    data.sensor_fit = "HORIZONTAL"
    data.angle = math.radians(job["camera"]["fieldOfView"])
    data.clip_end = 10000
    camera = bpy.data.objects.new("Main", data)
    camera.location = swapped(job["camera"]["position"])
    towards = swapped(job["camera"]["target"]) - camera.location
    camera.rotation_euler = towards.to_track_quat("-Z", "Y").to_euler()
    bpy.context.collection.objects.link(camera)
    bpy.context.scene.camera = camera


def settle_render(job):
    scene = bpy.context.scene
    render, cycles = scene.render, scene.cycles
    render.engine = "CYCLES"
    cycles.device = "CPU"
    cycles.samples = 1
    cycles.use_adaptive_sampling = False
    cycles.use_denoising = False
    cycles.max_bounces = 0
    cycles.pixel_filter_type = "BOX"
    render.resolution_x, render.resolution_y = job["width"], job["height"]
    render.resolution_percentage = 100
    render.threads_mode = "FIXED"
    render.threads = job["threads"]
    render.film_transparent = True
    render.image_settings.file_format = "OPEN_EXR"
    render.image_settings.color_mode = "RGBA"
    render.filepath = job["picture"]


def main():
    with open(sys.argv[sys.argv.index("--") + 1], encoding="utf-8") as stream:
        job = json.load(stream)
    for thing in list(bpy.data.objects):
        bpy.data.objects.remove(thing)
    settle_render(job)
    add_objects(job, occlusion_material(job["rays"], job["distance"]))
    add_camera(job)
    bpy.ops.render.render(write_still=True)


if __name__ == "__main__":
    main()
