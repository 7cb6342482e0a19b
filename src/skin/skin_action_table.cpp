#include "skin/skin_action_table.h"

#include "platform/text.h"

namespace skin {
namespace {

constexpr SkinActionTable kDefaultActions = {{
    {2647, 1, 6011, 0x0D, "PLAYPAUSE"},
    {2563, 1, 6003, 0x27, "NEXT"},
    {2564, 1, 6004, 0x25, "PREVIOUS"},
    {2642, 1, 6006, 0x26, "VOLUMEUP"},
    {2643, 1, 6007, 0x28, "VOLUMEDOWN"},
    {2658, 1, 6020, 0x31, "REPEATONOFF"},
    {2657, 1, 6021, 0x32, "SHUFFLEONOFF"},
    {2656, 1, 6022, 0x34, "XBASSONOFF"},
    {2655, 1, 6023, 0x35, "EQONOFF"},
    {2560, 1, 6000, 0, "PLAY"},
    {2561, 1, 6001, 0x73, "STOP"},
    {2562, 1, 6002, 0, "PAUSE"},
    {2644, 1, 6008, 0, "MUTE"},
    {2594, 1, 6012, 0, "LOADFILES"},
    {2648, 1, 6013, 0x33, "ADDFILES"},
    {2652, 1, 6017, 0x78, "FASTFORWARD"},
    {2653, 1, 6018, 0x77, "REWIND"},
    {0, 1, 0, 0, ""},
    {0, 1, 0, 0, ""},
    {0, 1, 0, 0, ""},
    {0, 1, 0, 0, ""},
    {0, 1, 0, 0, ""},
    {0, 1, 0, 0, ""},
    {0, 1, 0, 0, "SAMPLINGRATE"},
    {0, 1, 0, 0, "BITRATE"},
    {0, 1, 0, 0, "SEEKBAR"},
    {0, 1, 0, 0, "VOLUME"},
    {2329, 1, 6019, 0x36, "SETBOOKMARK"},
}};

}  // namespace

SkinActionTable& Actions() {
  static SkinActionTable table = kDefaultActions;
  return table;
}

const SkinActionTable& DefaultActions() {
  return kDefaultActions;
}

int FindActionRow(std::string_view name) {
  if (name.empty()) return -1;
  const SkinActionTable& table = Actions();
  for (int row = 0; row < kActionRowCount; ++row) {
    if (!table[row].name.empty() && platform::EqualsIgnoreCase(table[row].name, name)) return row;
  }
  return -1;
}

}  // namespace skin
