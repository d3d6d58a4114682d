// Reading scene files (JSON, see docs/scene.md) and the mesh files they name (OBJ, PLY, glTF).
//
// Every failure comes back as one line naming the file and the place: a JSON path such as
// "/objects/3/transform/rotation", or "line N" of a mesh file. Nothing here throws out.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <xsihost/scene.h>

namespace xsihost {

/// Reads the scene file at `path`. Returns null and sets `error` on failure.
std::shared_ptr<Scene> LoadSceneFile(const std::string& path, std::string& error);

/// Reads a scene from JSON text. Mesh files are resolved against `baseDirectory`; messages name
/// `fileLabel`.
std::shared_ptr<Scene> ParseSceneText(const std::string& text, const std::string& baseDirectory,
                                      const std::string& fileLabel, std::string& error);

/// Reads a polygon mesh from an OBJ, PLY or glTF file (chosen by extension), keeping the file's
/// vertex numbering and its polygons as they are (no triangulation). Returns false and sets
/// `error` on failure.
bool LoadMeshFile(const std::string& path, MeshData& mesh, std::string& error);

/// `key` as one reference token of a JSON Pointer (RFC 6901): "~" becomes "~0" and "/" becomes
/// "~1". Places in scene files and in `quillix` requests are written with it.
std::string JsonPointerToken(std::string_view key);

}  // namespace xsihost
