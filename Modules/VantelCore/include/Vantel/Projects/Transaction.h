// Transaction.h: collects the records of one user action on the calling thread.
//
//   Transaction transaction("Move operators");
//   blur->SetPosition({40.0f, 10.0f});                         // reports an OperatorPositionRecord
//   std::optional<CommittedTransaction> done = transaction.Commit();
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Projects/Record.h>

namespace Vantel {

// Transaction
//
// A scope that collects every Record reported on its thread while it is the innermost open one. Transactions
// form a stack per thread: opening one makes it the active transaction and remembers the previous one as its
// enclosing transaction; they must end in reverse order of opening. It is not shared between threads, and
// edits made on another thread are not seen by it. It can neither be copied nor moved, since the thread's
// stack points at it.
//
// It ends by Commit (the records go to the caller) or by destruction. Destroyed uncommitted inside another
// transaction, it attaches its records below the enclosing transaction's most recent record, which must be a
// CompoundRecord: that is how the rebuild caused by a structural change hangs below the change. If there is
// no record there, or it is not compound, the records are dropped with one of these errors:
//   "Transaction '<name>' had nothing to belong to: no change was recorded before it opened. What it
//    collected is dropped."
//   "Transaction '<name>' opened after a change that cannot hold one. What it collected is dropped."
// Destroyed uncommitted with no enclosing transaction, its records are discarded quietly.
// Ending (by Commit or destruction) while a transaction opened inside it is still open breaks the order; each
// such inner transaction is made inert (it takes no records and its end changes nothing) with the error
//   "Transaction '<name>' ended before '<inner>', which was opened inside it. What '<inner>' collected is
//    dropped."
//
// Normalisation, run when it ends either way: adjacent records of the same folding kind (ParameterValue,
// ParameterComponent, OperatorPosition, Rename, ListInputMove, ParameterNodeMove) with the same target (path;
// for a component record also the component) become one record holding the first
// previous value and the last next value. A record of a folding kind whose previous equals its next (a value
// set and set back) is dropped, after which its neighbours may fold in turn. Other kinds never fold.
//
//   {
//       Transaction transaction("Set radius");
//       radius->SetValue(2.0);
//       if (std::optional<CommittedTransaction> done = transaction.Commit()) history.push_back(*done);
//   }
class VANTEL_API Transaction {
public:
    explicit Transaction(std::string_view name);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Empty when the transaction had already ended or nothing remains after normalisation. Afterwards the
    // enclosing transaction, if any, is active again and takes this thread's records.
    std::optional<CommittedTransaction> Commit();

    // The innermost open transaction of this thread; null when none is open.
    static Transaction* Active();
    // False with no active transaction, and while a SuppressRecording lives on this thread.
    static bool IsRecording();
    // Discards `record` unless IsRecording() and the active transaction is still open. An OperatorPosition
    // record whose path matches a pending position record updates that record's `next` instead of being
    // appended, so dragging several operators together yields one record per operator. Every kind except
    // OperatorPosition, ListInputMove, ParameterNodeMove and Compound first clears the pending position
    // records.
    static void AddRecord(Record record);

    const std::string& GetName() const;
    // The records collected so far, in the order made; empty once committed.
    const std::vector<Record>& GetRecords() const;

    // SuppressRecording
    //
    // While one lives on this thread nothing is recorded, though Active() still answers. Nests.
    class VANTEL_API SuppressRecording {
    public:
        SuppressRecording();
        ~SuppressRecording();
        SuppressRecording(const SuppressRecording&) = delete;
        SuppressRecording& operator=(const SuppressRecording&) = delete;
    };

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
