#pragma once

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/Errors.h"

/// The reasons for which a change of rows can be refused, in the original engine's words where it has some.
namespace jet {

base::RuntimeError duplicateKey();
base::RuntimeError rowTooLong();
base::RuntimeError keyTooLong(base::TextView index);

base::RuntimeError nullInIndex();

/// It is not certain which key the original engine gives this text, so the index must not be written with ours.
base::RuntimeError uncertainKey(base::TextView index);

/// The keys stored in the index differ from those that this engine makes.
base::RuntimeError foreignKeys(base::TextView index);

/// The column cannot hold the value.
WriteRefused valueTooLong();
WriteRefused valueOfOtherType();

/// Violated rules of columns.
/// @param column  as "Table.Column"
WriteRefused nullNotAllowed(base::TextView column);
WriteRefused emptyTextNotAllowed(base::TextView column);
WriteRefused columnNotUpdatable(base::TextView column);

/// @param text  the message that the database's author wrote; if empty, the engine names the rule
/// @param owner  "Table.Column", or "Table" for the rule of a table
WriteRefused ruleViolated(base::TextView text, base::TextView rule, base::TextView owner);

base::RuntimeError autoNumbersUsedUp();

/// Somebody else has changed or deleted the row since it was read.
base::RuntimeError rowChanged();
base::RuntimeError rowDeleted();

/// Relationships: rows of `table` refer to the row, or `table` lacks the row that is referred to.
base::RuntimeError relatedRowsExist(base::TextView table);
base::RuntimeError relatedRowMissing(base::TextView table);

/// The table has a feature that the engine cannot keep correct.
/// @param what  continues the sentence "... kann nicht geschrieben werden: "
base::RuntimeError tableNotWritable(base::TextView table, base::TextView what);

}  // namespace jet
