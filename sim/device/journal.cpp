// The journal: what programs asked of the device, what it told them, and what was done to it from outside.
#include "sim/device/journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "sim/core/error_names.h"
#include "sim/core/text.h"

namespace sim {

namespace {

std::string kind_text(RecordKind kind) {
    switch (kind) {
        case RecordKind::call:
            return "call";
        case RecordKind::callback:
            return "callback";
        case RecordKind::command:
            return "command";
        case RecordKind::program:
            return "program";
        case RecordKind::lost:
            break;
    }
    return "lost";
}

std::string or_dash(std::string const& text) {
    return text.empty() ? "-" : text;
}

std::string or_dash(unsigned int number) {
    return number == 0 ? "-" : std::to_string(number);
}

}  // namespace

std::string record_line(std::uint64_t sequence, Record const& record) {
    return seconds(record.start) + " " + seconds(record.took) + " " + std::to_string(sequence) + " " +
           kind_text(record.kind) + " " + or_dash(record.program) + " " + or_dash(record.thread) + " " +
           or_dash(record.object) + " " + (record.error == 0 ? "-" : error_name(record.error)) + " " +
           or_dash(static_cast<unsigned int>(record.rule)) + " " + record.text;
}

std::string record_json(std::uint64_t sequence, Record const& record) {
    std::string json = "{\"sequence\": " + std::to_string(sequence) + ", \"start\": " + seconds(record.start) +
                       ", \"took\": " + seconds(record.took) + ", \"kind\": " + json_text(kind_text(record.kind));
    if (!record.program.empty()) {
        json += ", \"program\": " + json_text(record.program);
    }
    if (!record.program.empty() && record.kind != RecordKind::program) {
        json += ", \"thread\": " + std::to_string(record.thread);
    }
    if (record.object != 0) {
        json += ", \"object\": " + std::to_string(record.object);
    }
    if (record.error != 0) {
        json += ", \"error\": " + json_text(error_name(record.error));
    }
    if (record.rule != 0) {
        json += ", \"rule\": " + std::to_string(record.rule);
    }
    return json + ", \"text\": " + json_text(record.text) + "}";
}

Error Journal::open(std::string const& path, bool json) {
    file_ = Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666));
    json_ = json;
    rest_.clear();
    lost_ = 0;
    if (!file_) {
        return "cannot write the journal " + path + ": " + std::strerror(errno);
    }
    ::fcntl(file_.get(), F_SETFL, O_APPEND | O_NONBLOCK);  // of a pipe
    return {};
}

int Journal::follow(Follower follower) {
    followers_.emplace(next_id_, std::move(follower));
    return next_id_++;
}

void Journal::unfollow(int id) {
    followers_.erase(id);
}

void Journal::write(Record const& record) {
    if (!on()) {
        return;
    }
    std::uint64_t const sequence = ++sequence_;
    if (file_) {
        write_to_file(sequence, record);
    }
    for (auto const& [id, follower] : followers_) {
        follower(sequence, record);
    }
}

void Journal::write_to_file(std::uint64_t sequence, Record const& record) {
    tell_lost();
    if (lost_ > 0 || !put(sequence, record)) {
        ++lost_;
        last_lost_ = sequence;
        gap_.start = record.start;
    }
}

void Journal::tell_lost() {
    put_rest();
    if (lost_ > 0) {
        gap_.text = std::to_string(lost_) + " lines, as they could not be written";
        lost_ = put(last_lost_, gap_) ? 0 : lost_;
    }
}

// Whether the line is in the file, if only its beginning: the rest then comes before all else.
bool Journal::put(std::uint64_t sequence, Record const& record) {
    if (!put_rest()) {
        return false;
    }
    rest_ = (json_ ? record_json(sequence, record) : record_line(sequence, record)) + "\n";
    std::size_t const size = rest_.size();
    bool const begun = put_rest() || rest_.size() < size;
    rest_.resize(begun ? rest_.size() : 0);
    return begun;
}

bool Journal::put_rest() {
    if (!rest_.empty()) {
        ssize_t const written = ::write(file_.get(), rest_.data(), rest_.size());
        rest_.erase(0, written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return rest_.empty();
}

}  // namespace sim
