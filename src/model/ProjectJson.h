#pragma once

#include <QJsonObject>

class Project;

/// The keys, defaults and texts of the project file.
namespace ProjectJson {

/// Every field of the project.
QJsonObject write(const Project& project);

/// Replaces every field of `project`. Takes anything: what is missing or of another type becomes
/// its default, unknown keys are dropped, ranges are not checked.
void read(const QJsonObject& json, Project* project);

} // namespace ProjectJson
