#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

Path At(std::string_view text) {
    return *Path::Parse(text);
}

ParameterValueRecord Value(std::string_view path, nlohmann::json previous, nlohmann::json next) {
    return {At(path), std::move(previous), std::move(next)};
}

OperatorPositionRecord Position(std::string_view path, float previous, float next) {
    return {At(path), glm::vec2(previous), glm::vec2(next)};
}

CompoundRecord Compound(std::string_view path) {
    return {At(path), 1, 2, {}};
}

// A transaction opened inside another attaches what it collects below the compound record before it, unless
// it commits itself: then it ends once, and recording goes back to the enclosing one.
TEST(Transaction, NestedTransactionAttachesBelowTheCompoundRecordUnlessCommitted) {
    EXPECT_EQ(Transaction::Active(), nullptr);
    Transaction::AddRecord(Value("/A/W", 0, 1));  // no transaction: discarded
    Transaction outer("Set mode");
    {
        Transaction empty("Empty");
        EXPECT_FALSE(empty.Commit());
        EXPECT_EQ(Transaction::Active(), &outer);
    }
    EXPECT_TRUE(outer.GetRecords().empty());
    Transaction::AddRecord(Value("/A/X", 0, 1));
    Transaction::AddRecord(Compound("/A/Mode"));
    {
        Transaction inner("Rebuild");
        EXPECT_EQ(Transaction::Active(), &inner);
        Transaction::AddRecord(Value("/A/Y", 0, 1));
        Transaction::AddRecord(Value("/A/Y", 1, 2));
        Transaction::AddRecord(ParameterAddedRecord{At("/A/Z"), 3, {{"Type", "Float"}}});
    }
    EXPECT_EQ(Transaction::Active(), &outer);
    {
        Transaction inner("Inner");
        Transaction::AddRecord(Value("/A/V", 0, 1));
        std::optional<CommittedTransaction> committed = inner.Commit();
        ASSERT_TRUE(committed);
        EXPECT_EQ(committed->records, std::vector<Record>{Value("/A/V", 0, 1)});
        EXPECT_TRUE(inner.GetRecords().empty());
        EXPECT_FALSE(inner.Commit());
        Transaction::AddRecord(Value("/A/U", 0, 1));
    }
    std::optional<CommittedTransaction> committed = outer.Commit();
    ASSERT_TRUE(committed);
    EXPECT_EQ(committed->name, "Set mode");
    CompoundRecord expected = Compound("/A/Mode");
    expected.nested = {Value("/A/Y", 0, 2), ParameterAddedRecord{At("/A/Z"), 3, {{"Type", "Float"}}}};
    EXPECT_EQ(committed->records, (std::vector<Record>{Value("/A/X", 0, 1), expected, Value("/A/U", 0, 1)}));
    EXPECT_EQ(Transaction::Active(), nullptr);
}

// A nested transaction with nothing to attach to, or one whose enclosing transaction ends first, is the
// caller's mistake: what it collected is dropped with an error, and the thread keeps no dangling transaction.
TEST(Transaction, MisplacedNestedTransactionsLogAndDropTheirRecords) {
    LogCapture log;
    Transaction base("Base");
    {
        Transaction inner("Early");
        Transaction::AddRecord(Value("/A/X", 0, 1));
    }
    EXPECT_TRUE(base.GetRecords().empty());
    Transaction::AddRecord(Value("/A/X", 0, 1));
    {
        Transaction inner("Late");
        Transaction::AddRecord(Value("/A/Y", 0, 1));
    }
    {
        Transaction inner("Empty");  // collected nothing: nothing to report
    }
    {
        Transaction inner("Set back");  // normalised away before it looks for a holder
        Transaction::AddRecord(Value("/A/Y", 0, 1));
        Transaction::AddRecord(Value("/A/Y", 1, 0));
    }
    EXPECT_EQ(base.GetRecords(), std::vector<Record>{Value("/A/X", 0, 1)});
    EXPECT_EQ(
        log.Text(),
        "[Error] Transaction 'Early' had nothing to belong to: no change was recorded before it opened. "
        "What it collected is dropped.\n"
        "[Error] Transaction 'Late' opened after a change that cannot hold one. What it collected is "
        "dropped.\n");

    log.Clear();
    Transaction::AddRecord(Compound("/A"));
    auto outer = std::make_unique<Transaction>("Outer");
    Transaction::AddRecord(Compound("/A/Mode"));
    auto inner = std::make_unique<Transaction>("Inner");
    Transaction::AddRecord(Value("/A/X", 0, 1));
    outer.reset();
    EXPECT_EQ(Transaction::Active(), &base);
    EXPECT_EQ(log.Text(),
              "[Error] Transaction 'Outer' ended before 'Inner', which was opened inside it. What 'Inner' "
              "collected is dropped.\n");
    EXPECT_TRUE(inner->GetRecords().empty());
    EXPECT_FALSE(inner->Commit());
    inner.reset();
    EXPECT_EQ(Transaction::Active(), &base);
    CompoundRecord expected = Compound("/A");
    expected.nested = {Compound("/A/Mode")};
    EXPECT_EQ(base.GetRecords(), (std::vector<Record>{Value("/A/X", 0, 1), expected}));
}

TEST(Transaction, SuppressionStopsRecordingButNotTheTransactionOnItsThreadOnly) {
    Transaction transaction("Replay");
    {
        Transaction::SuppressRecording outer;
        { Transaction::SuppressRecording inner; }
        EXPECT_EQ(Transaction::Active(), &transaction);
        EXPECT_FALSE(Transaction::IsRecording());
        Transaction::AddRecord(Value("/A/X", 0, 1));
    }
    EXPECT_TRUE(Transaction::IsRecording());

    // The structure's suppression and the transactions are the thread's own.
    EXPECT_FALSE(SuppressUpdateStructure::IsActive());
    {
        SuppressUpdateStructure outer;
        { SuppressUpdateStructure inner; }
        EXPECT_TRUE(SuppressUpdateStructure::IsActive());
        std::thread([] {
            EXPECT_FALSE(SuppressUpdateStructure::IsActive());
            EXPECT_EQ(Transaction::Active(), nullptr);
            Transaction::AddRecord(Value("/A/X", 0, 1));
            Transaction worker("Worker");
            Transaction::AddRecord(Value("/A/Y", 0, 1));
            std::optional<CommittedTransaction> committed = worker.Commit();
            ASSERT_TRUE(committed);
            EXPECT_EQ(committed->records, std::vector<Record>{Value("/A/Y", 0, 1)});
        }).join();
    }
    EXPECT_FALSE(SuppressUpdateStructure::IsActive());
    EXPECT_EQ(Transaction::Active(), &transaction);
    EXPECT_TRUE(transaction.GetRecords().empty());
}

TEST(Transaction, CommitFoldsSuccessiveChangesOfOneTarget) {
    struct Row {
        const char* name;
        std::vector<Record> made;
        std::vector<Record> committed;
        bool unchanged = false;  // committed as made
    };
    const std::vector<Row> rows{
        {"values fold to first previous and last next",
         {Value("/A/X", 0, 1), Value("/A/X", 1, 2), Value("/A/X", 2, 3)},
         {Value("/A/X", 0, 3)}},
        {"set and set back is dropped", {Value("/A/X", 0, 1), Value("/A/X", 1, 0)}, {}},
        {"-0 is a change from 0, a NaN none from a NaN",
         {Value("/A/X", 0.0, -0.0), OperatorPositionRecord{At("/A"), glm::vec2(0.0f), glm::vec2(-0.0f)},
          Value("/A/Y", NAN, NAN)},
         {Value("/A/X", 0.0, -0.0), OperatorPositionRecord{At("/A"), glm::vec2(0.0f), glm::vec2(-0.0f)}}},
        {"different targets stay", {Value("/A/X", 0, 1), Value("/A/Y", 1, 2)}, {}, true},
        {"components fold only with the same component",
         {ParameterComponentRecord{At("/A/V"), 0, 0, 1}, ParameterComponentRecord{At("/A/V"), 1, 0, 1},
          ParameterComponentRecord{At("/A/V"), 1, 1, 5}},
         {ParameterComponentRecord{At("/A/V"), 0, 0, 1}, ParameterComponentRecord{At("/A/V"), 1, 0, 5}}},
        {"renames and moves fold",
         {RenameRecord{At("/A"), "a", "b"}, RenameRecord{At("/A"), "b", "c"},
          ListInputMoveRecord{At("/L/I"), 0, 2}, ListInputMoveRecord{At("/L/I"), 2, 0},
          ParameterNodeMoveRecord{At("/A/P"), 1, 2}, ParameterNodeMoveRecord{At("/A/P"), 2, 3}},
         {RenameRecord{At("/A"), "a", "c"}, ParameterNodeMoveRecord{At("/A/P"), 1, 3}}},
        {"only adjacent records fold",
         {Value("/A/X", 0, 1), Value("/A/Y", 0, 1), Value("/A/X", 1, 2)},
         {},
         true},
        {"a dropped record lets its neighbours fold",
         {Value("/A/X", 0, 1), Value("/A/Y", 0, 1), Value("/A/Y", 1, 0), Value("/A/X", 1, 2)},
         {Value("/A/X", 0, 2)}},
        {"presence, structure and compound records never fold",
         {DataConnectionRecord{At("/A"), At("/B"), Presence::Added},
          DataConnectionRecord{At("/A"), At("/B"), Presence::Removed}, StructureRecord{At("/A"), 1, 1},
          StructureRecord{At("/A"), 1, 1}, Compound("/A/M"), Compound("/A/M")},
         {},
         true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Transaction transaction(row.name);
        for (const Record& record : row.made) {
            Transaction::AddRecord(record);
        }
        const std::vector<Record> expected = row.unchanged ? row.made : row.committed;
        std::optional<CommittedTransaction> committed = transaction.Commit();
        EXPECT_EQ(committed ? committed->records : std::vector<Record>{}, expected);
        EXPECT_EQ(committed.has_value(), !expected.empty());
    }
}

TEST(Transaction, PendingPositionsFoldUntilAPlainRecord) {
    Transaction transaction("Drag");
    Transaction::AddRecord(Position("/A", 0, 1));
    Transaction::AddRecord(Position("/B", 0, 1));
    Transaction::AddRecord(ListInputMoveRecord{At("/L/I"), 0, 1});  // does not clear the pending entries
    Transaction::AddRecord(Position("/A", 1, 2));
    Transaction::AddRecord(Position("/B", 1, 2));
    EXPECT_EQ(transaction.GetRecords(), (std::vector<Record>{Position("/A", 0, 2), Position("/B", 0, 2),
                                                             ListInputMoveRecord{At("/L/I"), 0, 1}}));

    Transaction::AddRecord(Value("/A/X", 0, 1));  // clears them
    Transaction::AddRecord(Position("/A", 2, 3));
    ASSERT_EQ(transaction.GetRecords().size(), 5u);
    EXPECT_EQ(transaction.GetRecords().back(), Record(Position("/A", 2, 3)));

    // Pending again: the drag back folds into it, and commit drops the move that ends where it began.
    Transaction::AddRecord(Position("/A", 3, 2));
    EXPECT_EQ(transaction.GetRecords().back(), Record(Position("/A", 2, 2)));
    std::optional<CommittedTransaction> committed = transaction.Commit();
    ASSERT_TRUE(committed);
    EXPECT_EQ(committed->records,
              (std::vector<Record>{Position("/A", 0, 2), Position("/B", 0, 2),
                                   ListInputMoveRecord{At("/L/I"), 0, 1}, Value("/A/X", 0, 1)}));
}

}  // namespace
}  // namespace Vantel
