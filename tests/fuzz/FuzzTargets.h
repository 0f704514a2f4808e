#pragma once

#include <QByteArray>
#include <QList>

/// One function for each reader of what comes from a disk, a server or another program. It hands
/// its reader any bytes, and ends the process when a law is broken that holds for all of them; a
/// crash, a hang or a complaint of a sanitizer ends it too.
namespace FuzzTargets {

/// A project file: what is read writes itself back, renders in order, and comes back from undo.
void project(const QByteArray& input);

/// A content package: within its bounds or refused, and no bank outside its place.
void package(const QByteArray& input);

/// A groove file: whatever it holds, notes stay where notes may be.
void groove(const QByteArray& input);

/// The registry of downloads: no file goes but the banks that it may count.
void registry(const QByteArray& input);

/// The server's catalogue: named entries, with texts of a bounded length.
void catalogue(const QByteArray& input);

/// The suite's session file.
void session(const QByteArray& input);

/// A member's list of recent files: it never grows beyond its bounds, and takes the next one.
void recents(const QByteArray& input);

/// The answer of the login service: whole or none.
void login(const QByteArray& input);

/// A loop that is dragged in from anywhere: what is read comes back.
void drop(const QByteArray& input);

/// An audio file: whole frames of finite number, or an error.
void audio(const QByteArray& input);

/// A work in one file: unpacked whole into its own folder, or refused without a trace.
void velta_obra(const QByteArray& input);

struct Target {
    /// The name of its folder of inputs, too.
    const char* name;
    void (*run)(const QByteArray& input);
};

const QList<Target>& all();

} // namespace FuzzTargets
