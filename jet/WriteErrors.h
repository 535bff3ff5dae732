#pragma once

#include "base/RuntimeError.h"
#include "base/Text.h"

/// What a change of rows can be refused for, with the original engine's words where it has some.
namespace jet {

base::RuntimeError duplicateKey();
base::RuntimeError rowTooLong();
base::RuntimeError keyTooLong(base::TextView index);

base::RuntimeError nullInIndex();

/// The text's key is not known for certain, so the index must not be written by it.
base::RuntimeError uncertainKey(base::TextView index);

/// The keys that stand in the index are not those that this engine makes.
base::RuntimeError foreignKeys(base::TextView index);

}  // namespace jet
