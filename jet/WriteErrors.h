#pragma once

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/Errors.h"

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

/// A value that its column cannot hold.
/// @param kind  says which number the failure has, and for these two which text
base::RuntimeError valueTooLong(WriteKind kind);
base::RuntimeError valueOfOtherType(WriteKind kind);

/// Rules of columns.
/// @param column  as "Table.Column"
base::RuntimeError nullNotAllowed(WriteKind kind, base::TextView column);
base::RuntimeError emptyTextNotAllowed(WriteKind kind, base::TextView column);
base::RuntimeError columnNotUpdatable(WriteKind kind, base::TextView column);

/// @param text  what the database's author wants to be said; if empty, the engine says which rule it is
/// @param owner  "Table.Column", or "Table" for the rule of a table
base::RuntimeError ruleViolated(WriteKind kind, base::TextView text, base::TextView rule, base::TextView owner);

base::RuntimeError autoNumbersUsedUp();

/// Relationships: rows of `table` refer to the row, or there is no row of `table` to refer to.
base::RuntimeError relatedRowsExist(base::TextView table);
base::RuntimeError relatedRowMissing(base::TextView table);

/// Somebody's table has something that the engine does not know how to keep.
/// @param what  goes on after "... kann nicht geschrieben werden: "
base::RuntimeError tableNotWritable(base::TextView table, base::TextView what);

}  // namespace jet
