// File names on a host whose separator isn't the `\` of the library's own path form. How a path's bytes become the
// host's file name (UTF-8, wide on Windows): host_file.h.

#ifndef TESSARIN_PLATFORM_HOST_PATH_H
#define TESSARIN_PLATFORM_HOST_PATH_H

namespace Tessarin {

/// The path under which the host has the file that `path` names, for a second try when `path` itself can't be opened.
/// Each `\` is changed to `/`. Each name is changed to the one in its folder that matches exactly, or else to the first
/// in byte order that matches without regard to the case of ASCII letters. `.`, `..`, empty names and a leading `/`
/// stay.
/// returns  a text as long as `path`, which the caller frees with free; null if `path` has no `\`, if a name has no
///          match, if memory runs out, or if `\` is the host's own separator
/// Threads: any. A file that others rename meanwhile may not be found.
char* HostPath(const char* path);

} // namespace Tessarin

#endif
