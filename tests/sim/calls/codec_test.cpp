// Tests of values as bytes: what one end writes the other reads, and all else is refused.
#include "sim/calls/codec.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <limits>
#include <memory>

#include "sim/calls/messages.h"
#include "sim/calls/operations.h"
#include "sim/calls/text.h"

namespace {

using sim::Decoder;
using sim::Encoder;
using sim::Hidden;
using sim::Text;

template <typename T>
std::string bytes_of(T const& value) {
    return Encoder().put(value).bytes();
}

// Bytes behind which there is nothing: a read beyond them ends the process.
class GuardedBytes {
public:
    explicit GuardedBytes(std::string_view bytes) : size_(bytes.size()) {
        auto const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        readable_ = (size_ / page + 1) * page;
        mapped_ = static_cast<char*>(
            ::mmap(nullptr, readable_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        length_ = readable_ + page;
        ::mprotect(mapped_ + readable_, page, PROT_NONE);
        bytes.copy(mapped_ + readable_ - size_, size_);
    }
    GuardedBytes(GuardedBytes const&) = delete;
    GuardedBytes& operator=(GuardedBytes const&) = delete;
    ~GuardedBytes() { ::munmap(mapped_, length_); }

    std::string_view view() const { return {mapped_ + readable_ - size_, size_}; }

private:
    std::size_t size_;
    std::size_t readable_ = 0;
    std::size_t length_ = 0;
    char* mapped_ = nullptr;
};

// The value comes back as it was; nothing shorter and nothing longer is one.
template <typename T>
void expect_round_trip(T const& value) {
    std::string const bytes = bytes_of(value);
    auto const again = std::make_unique<T>();
    Decoder whole(bytes);
    EXPECT_TRUE(whole.get(*again).complete());
    EXPECT_EQ(bytes_of(*again), bytes);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        GuardedBytes const cut(std::string_view(bytes).substr(0, size));
        auto const part = std::make_unique<T>();
        Decoder decoder(cut.view());
        EXPECT_FALSE(decoder.get(*part).complete()) << size << " of " << bytes.size();
        EXPECT_TRUE(decoder.failed()) << size << " of " << bytes.size();
    }
    std::string const more = bytes + '\0';
    Decoder decoder(more);
    EXPECT_FALSE(decoder.get(*again).complete());
}

TEST(CodecTest, NumbersComeBack) {
    expect_round_trip(std::numeric_limits<unsigned char>::max());
    expect_round_trip(std::numeric_limits<int>::min());
    expect_round_trip(std::numeric_limits<unsigned long>::max());
    expect_round_trip(-0.1F);
    expect_round_trip(std::numeric_limits<float>::quiet_NaN());
    expect_round_trip(true);
    expect_round_trip(hal::imx_te::imx567);
    expect_round_trip(static_cast<hal::imx_te>(-7));
    float fraction = 0;
    std::string const bytes = bytes_of(-0.1F);
    Decoder(bytes).get(fraction);
    EXPECT_EQ(fraction, -0.1F);
}

TEST(CodecTest, TextsComeBack) {
    expect_round_trip(Text());
    expect_round_trip(Text(""));
    expect_round_trip(Text("/dev/r47-rtu-driver"));
    expect_round_trip(std::string(1000, '\0'));
    expect_round_trip(Hidden<Text>{Text("image")});
    expect_round_trip(Hidden<Text>{});
    Text text("before");
    std::string const bytes = bytes_of(Text());
    Decoder(bytes).get(text);
    EXPECT_FALSE(text) << "nothing is not an empty text";
}

TEST(CodecTest, BitsAndMapsComeBack) {
    expect_round_trip(std::bitset<6>(0b101101));
    expect_round_trip(std::map<unsigned char, unsigned int>{});
    expect_round_trip(std::map<unsigned char, unsigned int>{{0, 46}, {255, 1}});
}

TEST(CodecTest, RecordsAndArraysComeBack) {
    expect_round_trip(hal::revision_t{1, 6, 0, 2, 22, 14});
    expect_round_trip(hal::dio_pin_config_t{});
    expect_round_trip(hal::spot_states{0x40, 0x10, {1, 0, 0, 1}, 9});
    VL53L5CX_ResultsData results{};
    results.distance_mm[63] = -1;
    results.motion_indicator.motion[31] = 5;
    expect_round_trip(results);
}

TEST(CodecTest, MessagesComeBack) {
    expect_round_trip(sim::Hello{1, sim::Lane::button, 2, "console"});
    expect_round_trip(sim::Welcome{3});
    expect_round_trip(sim::Refusal{"no"});
    expect_round_trip(sim::Call{sim::OperationId::tof_t_shot, 4, 5});
    expect_round_trip(sim::Quiet{sim::Lane::hub});
    expect_round_trip(sim::CallReply{-1, 5, true, false});
    expect_round_trip(
        sim::Event{sim::EventKind::press_record, 6, 4, {37, hal::cb_struct_te::quaternion_s16, {}}, true});
    sim::Done done{};
    done.records.release[4] = {5000, true};
    expect_round_trip(done);
}

template <typename Tuple>
void expect_tuple_round_trip() {
    expect_round_trip(Tuple{});
}

TEST(CodecTest, ArgumentsAndResultsOfEveryOperationComeBack) {
#define EXPECT_OPERATION(class_name, operation)                                       \
    {                                                                                 \
        SCOPED_TRACE(#class_name "::" #operation);                                    \
        expect_tuple_round_trip<sim::operations::class_name::operation::Arguments>(); \
        expect_tuple_round_trip<sim::operations::class_name::operation::Results>();   \
    }
#define CONSTRUCTOR(class_name, arguments) EXPECT_OPERATION(class_name, constructor)
#define DESTRUCTOR(class_name) EXPECT_OPERATION(class_name, destructor)
#define OPERATION(class_name, operation, result, arguments, results) EXPECT_OPERATION(class_name, operation)
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
#undef EXPECT_OPERATION
}

template <typename T>
void expect_refused(std::string const& bytes) {
    GuardedBytes const guarded(bytes);
    T value{};
    Decoder decoder(guarded.view());
    EXPECT_TRUE(decoder.get(value).failed()) << sim::quoted(bytes);
}

TEST(CodecTest, WhatNoEncoderWritesIsRefused) {
    expect_refused<bool>("\x02");
    expect_refused<Text>("\x02");
    expect_refused<Text>(std::string("\x01\xFF\xFF\xFF\xFF", 5) + "abc");
    expect_refused<std::string>("\xFF\xFF\xFF\xFF");
    expect_refused<std::bitset<6>>(bytes_of(std::uint64_t{1U << 6U}));
}

TEST(CodecTest, MapsWithKeysOutOfOrderOrTwiceAreRefused) {
    using Map = std::map<unsigned char, unsigned char>;
    std::string const two("\x02\0\0\0", 4);
    Map map;
    std::string const bytes = two + "\x01\x0A\x02\x0B";
    EXPECT_TRUE(Decoder(bytes).get(map).complete());
    expect_refused<Map>(two + "\x01\x0A\x01\x0B");
    expect_refused<Map>(two + "\x02\x0A\x01\x0B");
    expect_refused<Map>(std::string("\xFF\xFF\xFF\xFF", 4) + "\x01\x0A");
}

TEST(CodecTest, AFailureStays) {
    Decoder decoder(std::string_view("\x02\x01", 2));
    bool truth = true;
    decoder.get(truth);
    unsigned char byte = 9;
    decoder.get(byte);
    EXPECT_TRUE(decoder.failed());
    EXPECT_FALSE(decoder.complete());
    EXPECT_EQ(byte, 9) << "nothing more is read";
}

}  // namespace
