// The threads of the library that run the program's callbacks.
#include "sim/library/callbacks.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "sim/calls/event_progress.h"
#include "sim/core/thread.h"
#include "sim/library/device_link.h"

namespace sim {

namespace {

struct LaneThread {
    std::unique_ptr<Connection> connection;
    EventProgress progress;
    std::thread thread;
    unsigned int running = 0;  // the object whose event is being taken; 0: none
};

class Lanes {
public:
    // Never destroyed: the program may destroy its objects until its very end.
    static Lanes& instance() {
        static Lanes& lanes = *new Lanes;
        return lanes;
    }

    void open(Lane lane) {
        std::lock_guard<std::mutex> const lock(mutex_);
        LaneThread& own = of(lane);
        if (!own.connection) {
            Descriptor file;
            own.connection = DeviceLink::instance().open(lane, file);
            if (own.connection) {
                own.progress = EventProgress(file);
                own.thread = start_thread_without_signals(lane == Lane::hub ? "r47-hub" : "r47-button",
                                                          [this, &own] { run(own); });
            }
        }
    }

    void attach(unsigned int number, EventTaker& taker) {
        std::lock_guard<std::mutex> const lock(mutex_);
        takers_[number] = &taker;
        changed_.notify_all();
    }

    void detach(unsigned int number) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (number == 0) {
            return;  // it never had any
        }
        takers_.erase(number);
        for (LaneThread const* const lane : {&hub_, &button_}) {
            changed_.wait(
                lock, [&] { return lane->running != number || lane->thread.get_id() == std::this_thread::get_id(); });
        }
    }

    // No callback from now on; returns when none runs, unless it is called from one.
    void end() {
        end(Lane::hub);
        end(Lane::button);
    }

private:
    LaneThread& of(Lane lane) { return lane == Lane::hub ? hub_ : button_; }

    void end(Lane lane) {
        LaneThread& own = of(lane);
        if (!own.thread.joinable()) {
            return;
        }
        Exchange const quiet(message_of(MessageKind::quiet, Quiet{lane}));
        if (own.thread.get_id() == std::this_thread::get_id()) {
            own.thread.detach();  // it goes on to end the process, and calls the device over its lane meanwhile
            return;
        }
        own.connection->shut_down();
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            ending_ = true;
            changed_.notify_all();
        }
        own.thread.join();
    }

    void run(LaneThread& own) {
        enter_lane(*own.connection);
        std::string_view message;
        while (own.connection->receive(message)) {
            Decoder bytes(message);
            MessageKind kind{};
            Event event{};
            bytes.get(kind).get(event);
            if (kind != MessageKind::event || !bytes.complete()) {
                return;
            }
            EventTurn turn(event.announce);
            if (EventTaker* const taker = begin(own, event.object)) {
                taker->take(event, turn);
            }
            finish(own);
            bool const is_told = turn.done.next_record != 0 || own.progress.end();
            if (is_told && !own.connection->send(message_of(MessageKind::done, turn.done))) {
                return;
            }
        }
    }

    // The device may tell of an object whose constructor has not returned yet. Null at the program's end: where the
    // device has gone meanwhile, the object may never come, or may have gone too.
    EventTaker* begin(LaneThread& own, unsigned int object) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return ending_ || takers_.count(object) != 0; });
        if (ending_) {
            return nullptr;
        }
        own.running = object;
        return takers_[object];
    }

    void finish(LaneThread& own) {
        std::lock_guard<std::mutex> const lock(mutex_);
        own.running = 0;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<unsigned int, EventTaker*> takers_;  // by the number of their object
    bool ending_ = false;
    LaneThread hub_;
    LaneThread button_;
};

// Ends the callbacks before the program's statics go. It is made with the first object that has some, and so goes
// before all statics that were there then.
struct EndOfProgram {
    ~EndOfProgram() { Lanes::instance().end(); }
};

// Where the device has gone, what it told of happened all the same.
CallbackTurn announce() {
    Exchange announcement(message_of(MessageKind::begin));
    CallReply reply{};
    bool const answered = announcement.answered() && !announcement.reply().get(reply).failed();
    return answered ? static_cast<CallbackTurn>(reply.result) : CallbackTurn::call;
}

}  // namespace

void EventTurn::call(std::function<void()> const& function) {
    if (!announced_) {
        function();
        return;
    }
    CallbackTurn turn;
    do {
        turn = announce();
        if (turn != CallbackTurn::skip) {
            function();
        }
    } while (turn == CallbackTurn::call_and_begin_again);
}

void open_lane(Lane lane) {
    static EndOfProgram const end;
    Lanes::instance().open(lane);
}

void attach(Object const& object, EventTaker& taker) {
    Lanes::instance().attach(object.number, taker);
}

void detach(Object const& object) {
    Lanes::instance().detach(object.number);
}

}  // namespace sim
