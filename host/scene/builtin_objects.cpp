#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/scene/builtin_classes.h"
#include "host/scene/parameter_lines.h"

namespace host {

using namespace line;

SceneClasses::SceneClasses() {
  AddBuiltinObjects(objects);
  AddParticleObjects(objects);
  AddBuiltinTags(tags);
  AddMaterial(materials);
  AddBuiltinShaders(shaders);
}

namespace {

void AddMesh(ElementClasses& objects) {
  Add(objects, kPolygonObject, "Mesh", "mesh",
      "Polygons from a file, or from \"points\" and \"polygons\" in the scene",
      {Any(kMeshFile, "MESH_FILE", Filename{}, "",
           "OBJ, PLY, STL, glTF, FBX ... file. Files are right-handed with y up; the import "
           "negates z and reverses the corners of each polygon"),
       Still(Real(
           kMeshFileScale, "MESH_FILE_SCALE", 0, 0, kLongest, "units",
           "Scene units per unit of the file. 0: 100 for glTF, whose unit is a meter, and 1 for "
           "other formats")),
       Any(kMeshFileNode, "MESH_FILE_NODE", std::string(), "",
           "Node of the file whose meshes to use, in its own space, with bones and morph targets; "
           "empty: the whole file")});
}

}  // namespace

const ElementClass& MeshClass() {
  static const ElementClasses mesh = [] {
    ElementClasses one;
    AddMesh(one);
    return one;
  }();
  return mesh.All().front();
}

namespace {

void AddLight(ElementClasses& objects) {
  Add(objects, kLightObject, "Light", "light",
      "Shines along its z axis or in all directions. A white surface that faces it gets the value "
      "color times intensity",
      {Cycle(LIGHT_TYPE, "LIGHT_TYPE", LIGHT_TYPE_POINT,
             {{LIGHT_TYPE_POINT, "point"},
              {LIGHT_TYPE_SPOT, "spot"},
              {LIGHT_TYPE_DIRECTIONAL, "directional"},
              {LIGHT_TYPE_AREA, "area"}},
             "Shape: a point, a cone, parallel rays, or a rectangle"),
       Color(LIGHT_COLOR, "LIGHT_COLOR", {1, 1, 1}, "Color of the light, scene-linear"),
       Real(LIGHT_INTENSITY, "LIGHT_INTENSITY", 1, 0, kUnbounded, "", "Strength of the light"),
       Cycle(LIGHT_FALLOFF, "LIGHT_FALLOFF", LIGHT_FALLOFF_NONE,
             {{LIGHT_FALLOFF_NONE, "none"}, {LIGHT_FALLOFF_INVERSE_SQUARE, "inverse_square"}},
             "How the light weakens with distance; not used by directional lights"),
       Real(LIGHT_FALLOFF_DISTANCE, "LIGHT_FALLOFF_DISTANCE", 100, 1e-6, kLongest, "units",
            "Distance at which a light with falloff has its full intensity"),
       Real(LIGHT_INNER_ANGLE, "LIGHT_INNER_ANGLE", 30, 0, 180, "degrees",
            "Full angle of the inner cone of a spot, where it is fully bright"),
       Real(LIGHT_OUTER_ANGLE, "LIGHT_OUTER_ANGLE", 45, 0, 180, "degrees",
            "Full angle of the outer cone of a spot, outside of which it is dark"),
       Real(LIGHT_SIZE_X, "LIGHT_SIZE_X", 100, 0, kLongest, "units", "Width of an area light"),
       Real(LIGHT_SIZE_Y, "LIGHT_SIZE_Y", 100, 0, kLongest, "units", "Height of an area light"),
       Real(LIGHT_RADIUS, "LIGHT_RADIUS", 0, 0, kLongest, "units",
            "Radius of a point or spot light, for soft shadows"),
       Real(LIGHT_ANGLE, "LIGHT_ANGLE", 0.53, 0, 180, "degrees",
            "Apparent diameter of a directional light, for soft shadows"),
       Cycle(
           LIGHT_SHADOW, "LIGHT_SHADOW", LIGHT_SHADOW_SOFT,
           {{LIGHT_SHADOW_NONE, "none"}, {LIGHT_SHADOW_HARD, "hard"}, {LIGHT_SHADOW_SOFT, "soft"}},
           "Shadows that the light casts"),
       Any(LIGHT_EXCLUDE, "LIGHT_EXCLUDE", LinkList(), "",
           "Objects that the light doesn't reach; nor what lies under them")});
}

void AddCamera(ElementClasses& objects) {
  Add(objects, kCameraObject, "Camera", "camera", "Looks along its z axis, with y up",
      {Real(CAMERA_FIELD_OF_VIEW, "CAMERA_FIELD_OF_VIEW", 53.13, 0.1, 170, "degrees",
            "Angle over the picture's width"),
       Real(CAMERA_NEAR, "CAMERA_NEAR", 5, 1e-6, kLongest, "units", "Nothing closer is seen")});
}

ParameterInfo Radius(double value) {
  return Real(kPrimitiveRadius, "PRIMITIVE_RADIUS", value, 1e-6, kLongest, "units",
              "Radius of the sphere, the cylinder, or the torus' middle line");
}

ParameterInfo Segments(std::int32_t value) {
  return Still(Whole(kPrimitiveSegments, "PRIMITIVE_SEGMENTS", value, 3, 4096,
                     "Number of polygons once around the y axis"));
}

ParameterInfo Rings(std::int32_t value, std::int32_t least, const char* help) {
  return Still(Whole(kPrimitiveRings, "PRIMITIVE_RINGS", value, least, 4096, help));
}

void AddPrimitives(ElementClasses& objects) {
  Add(objects, kSphereObject, "Sphere", "sphere", "A ball around the origin",
      {Radius(100), Segments(48), Rings(24, 2, "Number of polygons from pole to pole")});
  Add(objects, kBoxObject, "Cube", "cube", "A box around the origin, each side one polygon",
      {Edges(kPrimitiveSize, "PRIMITIVE_SIZE", {200, 200, 200}, "Edges")});
  Add(objects, kTorusObject, "Torus", "torus", "A ring around the y axis",
      {Radius(100),
       Real(kPrimitiveTubeRadius, "PRIMITIVE_TUBE_RADIUS", 25, 1e-6, kLongest, "units",
            "Radius of the tube"),
       Segments(48), Rings(24, 3, "Number of polygons around the tube")});
  Add(objects, kPlaneObject, "Plane", "plane", "A rectangle around the origin that faces up",
      {Real(kPrimitiveSize, "PRIMITIVE_WIDTH", 400, 1e-6, kLongest, "units", "Length along x"),
       Real(kPrimitiveHeight, "PRIMITIVE_DEPTH", 400, 1e-6, kLongest, "units", "Length along z"),
       Still(Whole(kPrimitiveSegments, "PRIMITIVE_SEGMENTS", 1, 1, 4096,
                   "Number of polygons along each side"))});
  Add(objects, kCylinderObject, "Cylinder", "cylinder", "A cylinder around the y axis",
      {Radius(50),
       Real(kPrimitiveHeight, "PRIMITIVE_HEIGHT", 200, 1e-6, kLongest, "units", "Length along y"),
       Segments(48), Rings(1, 1, "Number of polygons along y"),
       Still(Flag(kPrimitiveCaps, "PRIMITIVE_CAPS", true, "Closed at its two ends"))});
}

}  // namespace

void AddBuiltinObjects(ElementClasses& objects) {
  Add(objects, kNullObject, "Null", "null", "Groups and moves what lies under it", {});
  AddMesh(objects);
  AddLight(objects);
  AddCamera(objects);
  AddPrimitives(objects);
}

}  // namespace host
