// Whether a file can be found on disk. The one utility core that touches the file system.
#pragma once

#include <string>

namespace quillix {

// True when `path` names something that can be opened for reading in binary mode and is not a
// directory; the file is closed again at once. A missing file, a directory, a file the process
// may not read, anything that refuses to open (a socket) and the empty path give false. The
// path is used as it stands: relative paths resolve against the working directory and nothing
// is expanded. The text is passed to the C library unchanged (8-bit, as the host's narrow
// conversion produced it).
bool CanOpenForReading(const std::string& path);

}  // namespace quillix
