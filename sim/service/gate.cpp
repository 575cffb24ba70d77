// The one gate that every call passes: fault rules, lock, time, the device, journal.
#include "sim/service/gate.h"

#include <cerrno>
#include <tuple>
#include <type_traits>

#include "sim/calls/fault_values.h"
#include "sim/calls/text.h"
#include "sim/service/handlers.h"

namespace sim {

namespace {

using namespace operations;

// Operations that an object answers from what it knows: they do not need its node.
template <typename Op>
constexpr bool kRecalls = std::is_same_v<Op, camera_t::get_imxtype> || std::is_same_v<Op, autofocus_t::is_present>;
template <typename Op>
constexpr bool kOperates = Op::kKind == OperationKind::method;

// One call on its way through the gate.
template <typename Op, typename ObjectType>
class Passage {
public:
    using Result = typename Op::Result;
    using Handler = typename Op::template Handler<CallTarget<ObjectType>>;

    Passage(CallOrigin const& caller, Call const& call)
        : caller_(caller), call_(call), access_(caller.device), context_(access_, caller.program, caller.lane) {}

    std::string answer(Decoder& bytes, Handler* handler) {
        record_.start = access_.now();
        bytes.get(arguments_);
        if (!bytes.complete() || has_ended() || !find_object()) {
            return {};
        }
        ask_rules();
        if (has_ended()) {
            return {};
        }
        errno = 0;
        if (kOperates<Op> && fault_.answers()) {
            answer_by_rule();
        } else {
            answer_by_device(handler);
        }
        if (has_ended()) {
            return {};
        }
        if (Op::kKind == OperationKind::constructor && result_ == Result()) {
            return {};  // on an object that the program has not
        }
        error_ = !failed() ? 0 : errno != 0 ? errno : EINVAL;
        write_record();
        if (Op::kKind == OperationKind::destructor) {
            caller_.program.remove(*target_.object);
        }
        return reply();
    }

private:
    // While time passed, or before: then nothing is done any more, and nothing told.
    bool has_ended() const { return caller_.program.ended(); }

    // False where the program has no object of that number and kind.
    bool find_object() {
        if constexpr (Op::kKind == OperationKind::constructor || Op::kStatic) {
            return call_.object == 0;
        } else {
            object_ = caller_.program.object(call_.object);
            target_.object = dynamic_cast<ObjectType*>(object_.get());
            return target_.object != nullptr;
        }
    }

    void ask_rules() {
        if (access_->faults.none()) {
            return;
        }
        fault_ = access_->faults.next({Op::kName, access_.now(), call_.object, texts_of(arguments_)});
        if (fault_.delay) {
            context_.pass(*fault_.delay);
        }
    }

    // Without a status, the values are a success, and for a truth value or a code the result itself.
    void answer_by_rule() {
        FaultValues values(fault_.values);
        int const status = fault_.status.value_or(0);
        result_ = std::is_same_v<Result, bool> ? Result(status != 0) : Result(status);
        if (!fault_.values.empty()) {
            if constexpr (!std::is_same_v<Result, int>) {
                values.fill(result_);
            }
            std::apply([&](auto&... results) { (values.fill(results), ...); }, results_);
        }
        has_results_ = !fault_.values.empty();
        errno = status != 0 ? failure() : 0;
    }

    int failure() const { return fault_.error.value_or(EIO); }

    // 0, or the errno for which the device cannot be asked now.
    int check() const {
        if (!kOperates<Op> || kRecalls<Op>) {
            return 0;
        }
        if constexpr (Op::kStatic) {
            return access_->powered() ? 0 : EIO;
        } else {
            return target_.object->check();
        }
    }

    void answer_by_device(Handler* handler) {
        int const refusal = check();
        if (refusal != 0) {
            result_ = std::is_same_v<Result, int> ? Result(-1) : Result();
            errno = refusal;
            return;
        }
        done_ = true;
        result_ = std::apply(
            [&](auto const&... arguments) {
                return std::apply([&](auto&... results) { return handler(target_, arguments..., results...); },
                                  results_);
            },
            arguments_);
        has_results_ = !failed() || Op::kReports;
        if constexpr (Op::kKind == OperationKind::constructor) {
            result_ = 0;
            if (!target_.constructed) {
                return;
            }
            if (fault_.status.value_or(0) != 0) {
                target_.constructed->fail_opening(failure());
            }
            target_.constructed->set_number(++access_->last_object);
            result_ = static_cast<int>(access_->last_object);
            caller_.program.add(std::move(target_.constructed));
        }
    }

    // Only a status can be a failure.
    bool failed() const { return kOperates<Op> && std::is_same_v<Result, int> && result_ != Result(); }

    void write_record() {
        if (!access_->journal.on()) {
            return;
        }
        record_.took = access_.now() - record_.start;
        record_.program = caller_.program.name();
        record_.thread = call_.thread;
        record_.object = Op::kKind == OperationKind::constructor ? static_cast<unsigned int>(result_) : call_.object;
        record_.error = error_;
        record_.rule = fault_.rule;
        record_.text = std::string(Op::kName) + "(" + text_of_all(arguments_) + ")" + result_text();
        access_->journal.write(record_);
    }

    std::string result_text() const {
        if (!kOperates<Op>) {
            return {};
        }
        std::string const values = has_results_ ? text_of_all(results_) : std::string();
        return " = " + text_of(result_) + (values.empty() ? "" : " [" + values + "]");
    }

    template <typename Tuple>
    static std::string text_of_all(Tuple const& values) {
        return std::apply([](auto const&... each) { return list_of(each...); }, values);
    }

    template <typename Tuple>
    static std::vector<std::string> texts_of(Tuple const& values) {
        return std::apply([](auto const&... each) { return sim::texts_of(each...); }, values);
    }

    std::string reply() const {
        CallReply const reply{static_cast<std::int64_t>(result_), error_, done_, has_results_};
        return has_results_ ? message_of(MessageKind::reply, reply, results_) : message_of(MessageKind::reply, reply);
    }

    CallOrigin const& caller_;
    Call const& call_;
    Device::Access access_;
    CallContext context_;
    std::shared_ptr<ServedObject> object_;  // lives as long as the call, also where another thread destroys it
    CallTarget<ObjectType> target_{context_, nullptr, nullptr};
    typename Op::Arguments arguments_{};
    typename Op::Results results_{};
    FaultEffect fault_;
    Result result_{};
    int error_ = 0;
    bool done_ = false;
    bool has_results_ = false;
    Record record_;
};

using Answerer = std::string (*)(CallOrigin const&, Call const&, Decoder&);

template <typename Op, typename ObjectType, auto Handler>
std::string pass(CallOrigin const& caller, Call const& call, Decoder& bytes) {
    return Passage<Op, ObjectType>(caller, call).answer(bytes, Handler);
}

// By OperationId.
constexpr Answerer kAnswerers[] = {
#define PASS(class_name, operation) \
    &pass<operations::class_name::operation, object_types::class_name, &handlers::class_name::operation>,
#define CONSTRUCTOR(class_name, arguments) PASS(class_name, constructor)
#define DESTRUCTOR(class_name) PASS(class_name, destructor)
#define OPERATION(class_name, operation, result, arguments, results) PASS(class_name, operation)
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
#undef PASS
};

}  // namespace

std::string answer(CallOrigin const& caller, Call const& call, Decoder& bytes) {
    auto const operation = static_cast<std::size_t>(call.operation);
    return operation < std::size(kAnswerers) ? kAnswerers[operation](caller, call, bytes) : std::string();
}

}  // namespace sim
