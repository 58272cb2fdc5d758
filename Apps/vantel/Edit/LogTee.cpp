#include "LogTee.h"

#include <deque>
#include <mutex>
#include <streambuf>

namespace VantelHost {
namespace {
// Enough for the reason of any one refusal; older lines are only on the terminal.
constexpr std::size_t kKeptLines = 256;
}  // namespace

class LogTee::Buffer : public std::streambuf {
public:
    explicit Buffer(std::streambuf* target) : target(target) {}

    void SetListener(std::function<void(const std::string&)> newListener) {
        const std::lock_guard lock(mutex);
        listener = std::move(newListener);
    }

    std::uint64_t GetNextLineNumber() const {
        const std::lock_guard lock(mutex);
        return nextNumber;
    }

    std::vector<std::string> LinesSince(std::uint64_t number) const {
        const std::lock_guard lock(mutex);
        const std::uint64_t first = nextNumber - kept.size();
        std::vector<std::string> lines;
        for (std::uint64_t i = std::max(number, first); i < nextNumber; ++i) {
            lines.push_back(kept[i - first]);
        }
        return lines;
    }

protected:
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof())) {
            return traits_type::not_eof(character);
        }
        const char c = traits_type::to_char_type(character);
        xsputn(&c, 1);
        return character;
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override {
        const std::streamsize written = target->sputn(text, count);
        for (std::streamsize i = 0; i < count; ++i) {
            if (text[i] == '\n') {
                Publish(std::move(Line()));
                Line().clear();
            } else {
                Line() += text[i];
            }
        }
        return written;
    }

    int sync() override { return target->pubsync(); }

private:
    static std::string& Line() {
        thread_local std::string line;
        return line;
    }

    void Publish(std::string line) {
        std::function<void(const std::string&)> toCall;
        {
            const std::lock_guard lock(mutex);
            kept.push_back(line);
            if (kept.size() > kKeptLines) {
                kept.pop_front();
            }
            ++nextNumber;
            toCall = listener;
        }
        if (toCall) {
            toCall(line);
        }
    }

    std::streambuf* target;
    mutable std::mutex mutex;
    std::deque<std::string> kept;
    std::uint64_t nextNumber = 0;
    std::function<void(const std::string&)> listener;
};

LogTee::LogTee(std::ostream& stream)
    : stream(stream), buffer(std::make_unique<Buffer>(stream.rdbuf())), previous(stream.rdbuf()) {
    stream.rdbuf(buffer.get());
}

LogTee::~LogTee() {
    stream.rdbuf(previous);
}

void LogTee::SetListener(std::function<void(const std::string& line)> listener) {
    buffer->SetListener(std::move(listener));
}

std::uint64_t LogTee::GetNextLineNumber() const {
    return buffer->GetNextLineNumber();
}

std::vector<std::string> LogTee::LinesSince(std::uint64_t number) const {
    return buffer->LinesSince(number);
}

}  // namespace VantelHost
