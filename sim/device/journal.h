// The journal: what programs asked of the device, what it told them, and what was done to it from outside.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "sim/core/clock.h"
#include "sim/core/descriptor.h"
#include "sim/core/error.h"

namespace sim {

enum class RecordKind { call, callback, command, program, lost };

// One line of the journal. The texts are without line ends.
struct Record {
    RecordKind kind = RecordKind::call;
    Time start{0};
    Duration took{0};
    std::string program{};    // "NAME.NUMBER"; empty: none
    unsigned int thread = 0;  // of the program; 0: one that runs its callbacks
    unsigned int object = 0;  // 0: none
    int error = 0;            // errno; 0: none
    int rule = 0;             // the fault rule that answered; 0: none
    std::string text{};       // the operation with arguments and results, the function called, the command, the event
};

// One line, without line end, ten fields with a blank between two of them:
//   START TOOK SEQUENCE KIND PROGRAM THREAD OBJECT ERROR RULE TEXT
// The times in seconds with six decimals, ERROR as the name of its number, "-" for none; TEXT is the rest of the line.
std::string record_line(std::uint64_t sequence, Record const& record);
// The same as one JSON object.
std::string record_json(std::uint64_t sequence, Record const& record);

// Off unless someone reads it. All is called with the device's lock held, so that the order of the records is that of
// what they tell of.
class Journal {
public:
    // Gets each record with its number; must neither block nor call the journal.
    using Follower = std::function<void(std::uint64_t sequence, Record const& record)>;

    // Appends to `path` from now on, each line with one write, as lines or as JSON. A file that takes no more, such as
    // one on a full disk or a pipe that nobody empties, delays nobody: what is lost meanwhile is counted, and a record
    // says how much as soon as the file takes it.
    Error open(std::string const& path, bool json);
    int follow(Follower follower);
    void unfollow(int id);

    bool on() const { return file_ || !followers_.empty(); }
    void write(Record const& record);
    // Lines that the file lacks, and has no record of yet.
    std::uint64_t lost() const { return lost_; }
    // Writes that record, if it can be written now.
    void tell_lost();

private:
    void write_to_file(std::uint64_t sequence, Record const& record);
    bool put(std::uint64_t sequence, Record const& record);
    bool put_rest();

    Descriptor file_;
    bool json_ = false;
    std::string rest_;  // of a line that the file has the beginning of
    std::uint64_t lost_ = 0;
    Record gap_{RecordKind::lost};  // what will say so
    std::uint64_t last_lost_ = 0;   // sequence number
    std::uint64_t sequence_ = 0;
    std::map<int, Follower> followers_;
    int next_id_ = 1;
};

}  // namespace sim
