// UndoRedo.h: replays a committed transaction against a project, forward (redo) or backward (undo).
//
//   std::optional<CommittedTransaction> done = transaction.Commit();
//   UndoTransaction(project, *done);    // the model as before the action
//   ApplyTransaction(project, *done);   // and as after it again
#pragma once

#include <string>

#include <Vantel/Export.h>
#include <Vantel/Projects/Record.h>

namespace Vantel {

class Project;

// Replay runs under Transaction::SuppressRecording, so it never adds records to an open transaction. Redo
// takes the records in order, a compound record before its nested records; undo takes them in reverse, a
// compound record before its nested records, which go in reverse too. A step that fails (a target path that
// no longer resolves logs "ApplyRecord: <path> was not found. The history and the model have drifted
// apart.") makes the result false, and replay goes on with the next record.
//
// What follows the change of a record, in both directions:
//   - a parameter value (ParameterValue, ParameterComponent, Compound): the operator rebuilds its structure
//   if the value made it dirty;
//   - an operator re-created (Operator), a structure restored (Structure), a parameter or bundle re-created
//     (ParameterAdded to BundleRemoved): the references and connections the entry carries are resolved at
//     once;
//   - a bundle re-created: its operator rebuilds its structure, as when a file is loaded;
//   - a list input whose connection went away is removed by its graph, so a list input record that finds
//     its input already gone (or already back) counts as done;
//   - a nested record of a compound record below the operator that the compound record rebuilt: a target
//     that is gone counts as done, a parameter or bundle to put back that the rebuild made again keeps its
//     place and takes the stored values, and a parameter that the operator itself declared is never removed.
VANTEL_API bool ApplyTransaction(Project& project, const CommittedTransaction& transaction);
VANTEL_API bool UndoTransaction(Project& project, const CommittedTransaction& transaction);

// One line naming the change, e.g. "Set /Blur [k3x]/Radius to 2.5".
VANTEL_API std::string DescribeRecord(const Record& record);

}  // namespace Vantel
