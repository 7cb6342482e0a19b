// Where the program's files live on Linux.
//
// XDG base directories are the platform's conventions; tests point the
// variables at temporary folders. Each function reads the environment anew.
#pragma once

#include <string>

namespace platform {

class Registry;

// $HOME, or the password database's home. This is the root "\" of the phone's
// file system: where the search for media starts.
std::string HomeDirectory();

// $XDG_CONFIG_HOME/tavrinsonic (default ~/.config/tavrinsonic): the registry file.
std::string ConfigDirectory();

// $XDG_CONFIG_HOME (default ~/.config), without the program's folder.
std::string ConfigHome();

// $XDG_DATA_HOME (default ~/.local/share), without the program's folder.
std::string DataHome();

// $XDG_DATA_HOME/tavrinsonic: where the program installs itself.
std::string DefaultInstallDirectory();

// $XDG_RUNTIME_DIR/tavrinsonic (made, mode 0700), or /tmp/tavrinsonic-<uid>
// when the variable is unset: hand-over files and sockets.
std::string RuntimeDirectory();

// Folder of the running executable.
std::string ExecutableDirectory();

// The shipped resources: <executable>/../share/tavrinsonic, the same in an
// installed tree and in a build tree.
std::string ResourceDirectory();

// The install directory as stored in the registry (HKEY_LOCAL_MACHINE,
// "Security\AppInstall\Halvorkeep Tavrinsonic", value "InstallDir"), read anew
// on each call; empty when it isn't there.
std::string ReadInstallDirectory(Registry& registry);

// The install step of a start that finds no install directory: writes
// InstallDir (the default install directory) when it is missing, makes the
// folder, and copies the shipped BaseSkin/, presets/ and language packs
// (mui.*.qm) from `resourceDirectory` where they are missing. Files the user
// has changed are never overwritten. Returns the install directory, or empty
// when it couldn't be made.
std::string EnsureInstalled(Registry& registry, const std::string& resourceDirectory);

// `folder` joined with `name` by one slash.
std::string JoinPath(const std::string& folder, const std::string& name);

}  // namespace platform
