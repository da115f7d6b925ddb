#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/scene/own_classes.h"
#include "host/scene/parameter_lines.h"

namespace host {

using namespace line;

SceneClasses::SceneClasses() {
  AddOwnObjects(objects);
  AddParticleObjects(objects);
  AddOwnTags(tags);
  AddMaterial(materials);
  AddOwnShaders(shaders);
}

namespace {

void AddMesh(ElementClasses& objects) {
  Add(objects, kPolygonObject, "Mesh", "mesh",
      "Polygons from a file, or given as \"points\" and \"polygons\" beside the name",
      {Any(kMeshFile, "MESH_FILE", Filename{}, "",
           "OBJ, PLY, STL, glTF, FBX ... file. Files are right-handed with y up: z is negated, and "
           "the corners of each polygon are put in reverse order"),
       Still(Real(kMeshFileScale, "MESH_FILE_SCALE", 0, 0, kLongest, "units",
                  "Length of 1 of the file. 0: 100 for glTF, whose 1 is a meter, and 1 for all "
                  "others")),
       Any(kMeshFileNode, "MESH_FILE_NODE", std::string(), "",
           "A node of the file, for its meshes in its own space, with their bones and morphs; "
           "empty: all of the file as one")});
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
      "Shines along its z axis, or all around. Color times intensity is the picture's value of a "
      "white surface that faces it",
      {Cycle(LIGHT_TYPE, "LIGHT_TYPE", LIGHT_TYPE_POINT,
             {{LIGHT_TYPE_POINT, "point"},
              {LIGHT_TYPE_SPOT, "spot"},
              {LIGHT_TYPE_DIRECTIONAL, "directional"},
              {LIGHT_TYPE_AREA, "area"}},
             "From a point, in a cone, parallel, or from a rectangle"),
       Color(LIGHT_COLOR, "LIGHT_COLOR", {1, 1, 1}, "Color of the light, scene-linear"),
       Real(LIGHT_INTENSITY, "LIGHT_INTENSITY", 1, 0, kUnbounded, "", "Strength of the light"),
       Cycle(LIGHT_FALLOFF, "LIGHT_FALLOFF", LIGHT_FALLOFF_NONE,
             {{LIGHT_FALLOFF_NONE, "none"}, {LIGHT_FALLOFF_INVERSE_SQUARE, "inverse_square"}},
             "How the light weakens with the distance; of no account where it is directional"),
       Real(LIGHT_FALLOFF_DISTANCE, "LIGHT_FALLOFF_DISTANCE", 100, 1e-6, kLongest, "units",
            "Where the intensity holds, if the light weakens"),
       Real(LIGHT_INNER_ANGLE, "LIGHT_INNER_ANGLE", 30, 0, 180, "degrees",
            "Opening of a spot's cone of full light"),
       Real(LIGHT_OUTER_ANGLE, "LIGHT_OUTER_ANGLE", 45, 0, 180, "degrees",
            "Opening of the cone beyond which a spot is dark"),
       Real(LIGHT_SIZE_X, "LIGHT_SIZE_X", 100, 0, kLongest, "units", "Width of an area light"),
       Real(LIGHT_SIZE_Y, "LIGHT_SIZE_Y", 100, 0, kLongest, "units", "Height of an area light"),
       Real(LIGHT_RADIUS, "LIGHT_RADIUS", 0, 0, kLongest, "units",
            "Radius of the ball that a point or spot light is, for soft shadows"),
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

void AddOwnObjects(ElementClasses& objects) {
  Add(objects, kNullObject, "Null", "null", "Groups and moves what lies under it", {});
  AddMesh(objects);
  AddLight(objects);
  AddCamera(objects);
  AddPrimitives(objects);
}

}  // namespace host
