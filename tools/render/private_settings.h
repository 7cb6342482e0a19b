// A private world for one run of the render tool, so that a run never
// writes the user's files.
//
// The user's registry file is copied into a temporary folder (when there is
// one) and the XDG folders are pointed there: the player's settings are the
// user's stored ones, the options of the run change only the copy in memory,
// and whatever the start writes (the install directory, the volume, the
// language) lands in the copy, which goes with the folder at the end. The
// copy forgets the user's install directory, so the run installs the
// shipped files into its own.
#pragma once

#include <string>

namespace render {

class PrivateSettings {
 public:
  // Copies the registry of the XDG folders in force now; false from Ready()
  // when the temporary folder can't be made.
  PrivateSettings();
  ~PrivateSettings();
  PrivateSettings(const PrivateSettings&) = delete;
  PrivateSettings& operator=(const PrivateSettings&) = delete;

  bool Ready() const { return !folder.empty(); }
  // The copy of the registry, in the private configuration folder.
  std::string RegistryFile() const;

 private:
  std::string folder;
};

}  // namespace render
