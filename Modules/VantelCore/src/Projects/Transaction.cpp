#include <Vantel/Projects/Transaction.h>

#include <cstddef>
#include <type_traits>
#include <utility>

#include <Vantel/Support/Logging.h>
#include "Support/SameValue.h"

namespace Vantel {

namespace {

thread_local Transaction* activeTransaction = nullptr;
thread_local int recordingSuppression = 0;

template <typename T, typename... Kinds>
constexpr bool kIsAnyOf = (std::is_same_v<T, Kinds> || ...);

template <typename T>
constexpr bool kFolds = kIsAnyOf<T, ParameterValueRecord, ParameterComponentRecord, OperatorPositionRecord,
                                 RenameRecord, ListInputMoveRecord, ParameterNodeMoveRecord>;

// Moves keep their values in index fields; every other folding kind calls them previous and next.
template <typename T>
auto& Previous(T& record) {
    if constexpr (requires { record.previousIndex; }) {
        return record.previousIndex;
    } else {
        return record.previous;
    }
}

template <typename T>
auto& Next(T& record) {
    if constexpr (requires { record.nextIndex; }) {
        return record.nextIndex;
    } else {
        return record.next;
    }
}

// Folds `later` into `earlier` when both are of one folding kind and change the same target.
bool TryFold(Record& earlier, Record& later) {
    if (earlier.index() != later.index()) {
        return false;
    }
    return std::visit(
        [&later](auto& first) {
            using T = std::decay_t<decltype(first)>;
            if constexpr (kFolds<T>) {
                T& last = std::get<T>(later);
                if (first.path != last.path) {
                    return false;
                }
                if constexpr (std::is_same_v<T, ParameterComponentRecord>) {
                    if (first.component != last.component) {
                        return false;
                    }
                }
                Next(first) = std::move(Next(last));
                return true;
            } else {
                return false;
            }
        },
        earlier);
}

bool IsNoChange(Record& record) {
    return std::visit(
        [](auto& change) {
            if constexpr (kFolds<std::decay_t<decltype(change)>>) {
                return IsSameValue(Previous(change), Next(change));
            } else {
                return false;
            }
        },
        record);
}

void Normalize(std::vector<Record>& records) {
    std::vector<Record> result;
    result.reserve(records.size());
    for (Record& record : records) {
        if (result.empty() || !TryFold(result.back(), record)) {
            result.push_back(std::move(record));
        }
        if (IsNoChange(result.back())) {
            result.pop_back();
        }
    }
    records = std::move(result);
}

bool ClearsPendingEntries(const Record& record) {
    return !std::holds_alternative<OperatorPositionRecord>(record) &&
           !std::holds_alternative<ListInputMoveRecord>(record) &&
           !std::holds_alternative<ParameterNodeMoveRecord>(record) &&
           !std::holds_alternative<CompoundRecord>(record);
}

}  // namespace

class Transaction::Implementation {
public:
    std::string name;
    std::vector<Record> records;
    // Indices into `records` of the position records that a later move of the same operator folds into. Read
    // only while the transaction collects.
    std::vector<std::size_t> pending;
    Transaction* enclosing = nullptr;
    bool finished = false;

    void Finish() {
        if (!finished) {
            EndInnerTransactions();
        }
        finished = true;
        if (activeTransaction != nullptr && activeTransaction->implementation.get() == this) {
            activeTransaction = enclosing;
        }
    }

    // Ending before a transaction opened inside this one breaks the stack order. The inner ones cannot go on
    // (they would end into this one once it is gone), so they are made inert and this one becomes the top.
    void EndInnerTransactions() {
        if (!IsOnThisThreadsStack()) {
            return;  // ended on another thread: nothing here to put in order
        }
        while (activeTransaction->implementation.get() != this) {
            Implementation& inner = *activeTransaction->implementation;
            LogError("Transaction '" + name + "' ended before '" + inner.name +
                     "', which was opened inside it. What '" + inner.name + "' collected is dropped.");
            activeTransaction = inner.enclosing;
            inner.finished = true;
            inner.enclosing = nullptr;
            inner.records.clear();
        }
    }

    bool IsOnThisThreadsStack() const {
        for (const Transaction* open = activeTransaction; open != nullptr;
             open = open->implementation->enclosing) {
            if (open->implementation.get() == this) {
                return true;
            }
        }
        return false;
    }

    // After Finish: moves what was collected into the enclosing transaction's last compound record.
    void Attach() {
        Normalize(records);
        if (records.empty()) {
            return;
        }
        std::vector<Record>& target = enclosing->implementation->records;
        if (target.empty()) {
            LogError(
                "Transaction '" + name +
                "' had nothing to belong to: no change was recorded before it opened. What it collected is "
                "dropped.");
            return;
        }
        auto* compound = std::get_if<CompoundRecord>(&target.back());
        if (compound == nullptr) {
            LogError("Transaction '" + name +
                     "' opened after a change that cannot hold one. What it collected is dropped.");
            return;
        }
        for (Record& record : records) {
            compound->nested.push_back(std::move(record));
        }
        records.clear();
    }

    void Add(Record record) {
        if (const auto* move = std::get_if<OperatorPositionRecord>(&record)) {
            for (std::size_t index : pending) {
                auto& held = std::get<OperatorPositionRecord>(records[index]);
                if (held.path == move->path) {
                    held.next = move->next;
                    return;
                }
            }
            pending.push_back(records.size());
        } else if (ClearsPendingEntries(record)) {
            pending.clear();
        }
        records.push_back(std::move(record));
    }
};

Transaction::Transaction(std::string_view name) : implementation(std::make_unique<Implementation>()) {
    implementation->name = name;
    implementation->enclosing = activeTransaction;
    activeTransaction = this;
}

Transaction::~Transaction() {
    const bool nestedAndOpen = !implementation->finished && implementation->enclosing != nullptr;
    implementation->Finish();
    if (nestedAndOpen) {
        implementation->Attach();
    }
}

std::optional<CommittedTransaction> Transaction::Commit() {
    if (implementation->finished) {
        return std::nullopt;
    }
    implementation->Finish();
    Normalize(implementation->records);
    if (implementation->records.empty()) {
        return std::nullopt;
    }
    CommittedTransaction committed{implementation->name, std::move(implementation->records)};
    implementation->records.clear();
    return committed;
}

Transaction* Transaction::Active() {
    return activeTransaction;
}

bool Transaction::IsRecording() {
    return activeTransaction != nullptr && recordingSuppression == 0;
}

void Transaction::AddRecord(Record record) {
    if (!IsRecording() || activeTransaction->implementation->finished) {
        return;
    }
    activeTransaction->implementation->Add(std::move(record));
}

const std::string& Transaction::GetName() const {
    return implementation->name;
}

const std::vector<Record>& Transaction::GetRecords() const {
    return implementation->records;
}

Transaction::SuppressRecording::SuppressRecording() {
    ++recordingSuppression;
}

Transaction::SuppressRecording::~SuppressRecording() {
    --recordingSuppression;
}

}  // namespace Vantel
