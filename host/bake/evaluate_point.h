// Evaluates a value of a surface at a given point of a mesh. The shading sample is filled from the triangle and the
// point in it instead of by a camera ray, so that no ray can miss the point or hit a neighbour.
#pragma once

#include "host/bake/baked_value.h"
#include "host/render/scene/render_job.h"

#include <cstdint>
#include <string>
#include <utility>

namespace velm::host {

// A point on the mesh of an object.
struct SurfacePoint {
    std::uint32_t object;   // an index into RenderSceneData::objects
    std::uint32_t triangle; // of the object's mesh
    double u, v;            // weights of the triangle's second and third corner; 1 - u - v is that of the first
    double footprint;       // side of the area whose value the point stands for, in metres: the sample's spot size
};

// From where points are seen. Points are always seen from their front: a viewer behind a triangle is mirrored at its
// plane.
class Viewer {
  public:
    // `name` is "normal" (every point is seen against its smooth normal, from a distance of 1 metre), "camera" (from
    // the camera of the job), or the name of a camera or light of the scene. InputError, listing the names, for
    // another. [between frames]
    Viewer(const RenderSceneData &scene, const RenderJob &job, const std::string &name);

    const HostItem *item() const { return item_; } // the camera or light; for normals the camera; may be null

    // Lets the viewer see the sample: sets its ray source, ray length and cosine. [render threads]
    void look(ShadingSample &sample) const;

  private:
    enum class From { normal, position, light } from_ = From::normal;
    const HostItem *item_ = nullptr;
    Vec3 position_;
    const Light *light_ = nullptr;
};

// Evaluates points of one scene at one time. The scene has to outlive it.
class PointEvaluator {
  public:
    PointEvaluator(const RenderSceneData &scene, BakedValue value, const Viewer &viewer)
        : scene_(scene), value_(std::move(value)), viewer_(viewer) {}

    const BakedValue &value() const { return value_; }

    // Whether the triangle's surface has the value.
    bool has(std::uint32_t object, std::uint32_t triangle) const;

    // The value at a point whose surface has it. Sets the state's ray origin; its seed and pixel have to be set before,
    // and stay. Normals are in world space. [render threads]
    Vec3 evaluate(RayState &state, const SurfacePoint &point) const;

  private:
    const RenderSceneData &scene_;
    BakedValue value_;
    Viewer viewer_;
};

} // namespace velm::host
