#include "OrvanSwitch.h"

namespace orvan {

const char* switchName(OrvanSwitch s)
{
    switch (s) {
    case OrvanSwitch::pad: return "pad";
    case OrvanSwitch::phantom: return "phantom";
    case OrvanSwitch::polarity: return "polarity";
    case OrvanSwitch::mute: return "mute";
    case OrvanSwitch::di: return "di";
    case OrvanSwitch::hpf: return "hpf";
    }
    return "?";
}

} // namespace orvan
