// The sessions of the fault sweep, which together visit every key of every menu.
#include "tests/proof/sweep_sessions.h"

#include <algorithm>
#include <sstream>

#include "tests/support/menus.h"

namespace proof {

namespace {

using namespace menus;
using Steps = std::vector<Step>;

Step typed(std::string const& text) {
    return {Step::Kind::type, text + "\n"};
}

// Each word a line.
Step sent(std::string const& words) {
    std::istringstream stream(words);
    std::string lines;
    for (std::string word; stream >> word;) {
        lines += word + "\n";
    }
    return {Step::Kind::send, lines};
}

Step seen(std::string const& text) {
    return {Step::Kind::wait, text};
}

Step device(std::string const& command) {
    return {Step::Kind::control, command};
}

Steps operator+(Steps first, Steps const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Step shown(Menu const& menu) {
    return seen(menu.prompt());
}

// The operator enters the menu and answers it with the keys.
Step typed_in(Menu const& menu, std::string const& keys = "") {
    return typed(menu.entry_keys() + (keys.empty() ? "" : " ") + keys);
}

// The client enters the menu and answers it with the words.
Step sent_to(Menu const& menu, std::string const& words = "") {
    return sent(menu.entry_keys() + " " + words);
}

// From then on the local menu is silent until somebody types.
Steps const kConnected = {{Step::Kind::connect, ""}, seen(screens::kSocketMenu)};

// The device's time stands still but where a step moves it, so that what the library's threads do comes at the same
// place of each run.
support::SessionOptions stepped() {
    support::SessionOptions options;
    options.clock = "stepped";
    return options;
}

support::SessionOptions word(support::SessionOptions options, std::string const& argument) {
    options.arguments = {argument};
    return options;
}

// A function that no menu reaches.
support::SessionOptions entry(std::string const& name) {
    support::SessionOptions options = stepped();
    options.entry_point = name;
    return options;
}

support::SessionOptions without(std::vector<std::string> const& nodes) {
    support::SessionOptions options = stepped();
    options.without = nodes;
    return options;
}

// Out of the taught position and back, and a press that teaches.
Steps const kTiltAndTeach = {device("step 1s"),    device("tilt 0 30 0"), device("step 3s"),
                             device("tilt 0 0 0"), device("step 3s"),     device("tilt 0 0 20"),
                             device("step 3s"),    device("press 6s"),    device("step 9s")};

// The client enters a menu that reads the terminal, where the operator types.
Steps visit(Menu const& menu, std::string const& keys) {
    return {sent(menu.entry_keys()), seen("Entered Option = " + menu.entry_keys()), shown(menu), typed(keys)};
}

std::string const kImageSensorKeys = "123 c e E100 h H1 i I j J D";
std::string const kAlarmKeys = "a5 b6 g7 t t D";

// At the terminal. 'D', and 'Y' where there is a 'D', are keys of no command.
std::vector<Session> terminal_sessions() {
    return {
        {"system",
         stepped(),
         {typed_in(kSystem, "f3 F F h")}},  // the slow ones first: this one and the legacy test wait a lot
        {"legacy alarm", options_for(kLegacyAlarm, stepped()),
         Steps{shown(kLegacyAlarm)} + kTiltAndTeach +
             Steps{typed("s"), seen("Your Option = s"), shown(kLegacyAlarm), device("step 2s"), typed("t t i D")}},
        {"main", stepped(), {typed("sDAO")}},
        {"main 0", stepped(), {typed("A")}, Exit::operator_0},
        {"dio", stepped(), {typed_in(kDio, "123 f0 0 0 0 0 1 5 1 5 1 5 F0 h0 1 H0 p o O G j k l m n D F0 H0 x a p x")}},
        {"dio 0", stepped(), {typed_in(kDio, "p")}, Exit::operator_0},
        {"rtu", stepped(), {typed_in(kRtu, "123 a1 A b100 B c5 C e5000 E m t10 T p D 12 A B C E p x")}},
        {"rtu 0", stepped(), {typed_in(kRtu, "B")}, Exit::operator_0},
        {"camera",
         stepped(),
         {typed_in(kCamera, "m t T W u25 U L v V e E100 f F5000 w i j8 16 J k s S1 z Z D W U L e f w i J k s z x")}},
        {"imx296", stepped(), {typed_in(kImx296, kImageSensorKeys + " 12 c e h i J x")}},
        {"imx567", without({"/dev/imx296"}), {typed_in(kImx567, kImageSensorKeys + " x")}},
        {"imx 0", stepped(), {typed_in(kImx567, "c")}, Exit::operator_0},
        {"no sensor", without({"/dev/imx296", "/dev/imx567"}), {typed_in(kImx296, "E k k m e x")}},
        {"illumination",
         stepped(),
         {typed_in(kIllumination,
                   "123 h a A1 i a A1 b B15 c C10 d e f g j J0 J1 J2 500 k K1 l L50 m M50 n N1 o O p P80 q Q1 1 1 1 "
                   "r70 s10 S t10 T u10 U v z Z1 y Y1 D 12 a b c d e f g j k l m n o O p q S T U v z y x")}},
        {"illumination 0", stepped(), {typed_in(kIllumination, "v")}, Exit::operator_0},
        {"autofocus",
         stepped(),
         {typed_in(kAutofocus, "123 a A500 b c d e f g h1 i1 l R47XXXX2 m M200 n1 D 12 a d e f g m x")}},
        {"autofocus 0", stepped(), {typed_in(kAutofocus, "f")}, Exit::operator_0},
        {"gyro",
         stepped(),
         {typed_in(kGyro, "123 d37 D37 20 3 a A37 50 100 w W s S P f F q e E b B"), seen("Your Option = B"),
          shown(kGyro), device("step 1s"), typed("n t t r Y x")}},
        {"gyro 0",
         stepped(),
         {typed("O g w"), seen("Your Option = w"), shown(kGyro), device("step 1s")},
         Exit::operator_0},
        {"old firmware", word(stepped(), "old_gyro_fw"), {typed_in(kGyro, "F x G x")}},
        {"alarm", stepped(), Steps{typed_in(kAlarm), shown(kAlarm)} + kTiltAndTeach + Steps{typed(kAlarmKeys + " x")}},
        {"alarm word", word(stepped(), "alarm"), {typed(kAlarmKeys)}},
        {"delegate", stepped(), {typed_in(kDelegate), shown(kDelegate), device("step 1s"), typed("t t D x")}},
        {"delegate+alarm", stepped(),
         Steps{typed_in(kDelegateAndAlarm), shown(kDelegateAndAlarm)} + kTiltAndTeach + Steps{typed("t t D x")}},
        {"button",
         stepped(),
         {typed_in(kButton), shown(kButton), device("press 2500ms"), device("step 3s"), device("press 4500ms"),
          device("step 5s"), typed("r D r x")}},
        {"delegate of the unit", entry("rtu_delegate"), {}, Exit::by_itself},
        {"ranging", stepped(), {typed_in(kTof, "a64 b10 c3 d20 e5 4 700 f g3 h i j0 h j1 h D x")}},
    };
}

// In socket mode. The two threads of the console run in real time, so a delayed call takes real time as well.
std::vector<Session> client_sessions() {
    support::SessionOptions const real = word({}, "socket");
    return {
        {"client: main", real, kConnected + Steps{sent("A s L D O A")}, Exit::client_first},
        {"client: dio", real,
         kConnected + Steps{sent_to(kDio, "1 2 3 f 0 0 0 0 0 1 5 1 5 1 5 F 0 h 0 1 H 0 p o O G D x A")},
         Exit::client_first},
        {"client: camera", real,
         kConnected + Steps{sent_to(kCamera, "m t T W u 25 U L v V e E"), seen("Enter a value for gain: "),
                            typed("100"), sent("f F"), seen("Enter a value for exposure: "), typed("5000"),
                            sent("w i j 8 16 J k s S 1 z Z D x A")},
         Exit::client_first},
        {"client: button", real, kConnected + Steps{sent_to(kButton, "r D r x")}, Exit::client_first},
        // A number from the client gives the terminal back to the local menu, until this menu asks again.
        {"client: rtu", real,
         kConnected + Steps{sent_to(kRtu), shown(kRtu), typed("123 A b100 B c5 C e5000 E a"), sent("1"),
                            seen("ReadLine: 1\n"), shown(kRtu), typed("t"), sent("25"), seen("ReadLine: 25\n"),
                            shown(kRtu), typed("m T p D x"), sent("A")},
         Exit::client_first},
        {"client: illumination", real,
         kConnected + Steps{sent_to(kIllumination), shown(kIllumination), typed("a A1 v D x"), sent("A")},
         Exit::client_first},
        {"client: illumination functions", entry("illumination_client"), Steps{{Step::Kind::connect, ""}, sent("9 3")},
         Exit::by_itself},
        {"client: others", word(stepped(), "socket"),
         kConnected + visit(kImx296, "cx") + visit(kImx567, "cx") + visit(kAutofocus, "ax") + visit(kGyro, "Fx") +
             visit(kAlarm, "tx") + visit(kDelegate, "tx") + visit(kDelegateAndAlarm, "tx") + visit(kTof, "hx") +
             Steps{sent("A")},
         Exit::client_first},
        {"client: system", {}, Steps{typed("L")} + kConnected + Steps{sent_to(kSystem), shown(kSystem)}},
    };
}

// Where the clock is stepped, it is known before when a call runs, and a journal is the same each time.
Session twin_of(Session session) {
    session.name += ", stepped";
    session.options.clock = "stepped";
    session.twin = true;
    return session;
}

}  // namespace

std::vector<Session> const& sweep_sessions() {
    static auto const sessions = [] {
        std::vector<Session> all = terminal_sessions();
        for (Session& session : client_sessions()) {
            if (session.options.clock != "stepped") {
                all.push_back(twin_of(session));
            }
            all.push_back(std::move(session));
        }
        return all;
    }();
    return sessions;
}

bool has_client(Session const& session) {
    return std::any_of(session.steps.begin(), session.steps.end(),
                       [](Step const& step) { return step.kind == Step::Kind::connect; });
}

int Player::play() {
    for (Step const& step : session_.steps) {
        play(step);
    }
    leave();
    return console_.wait_for_exit();
}

void Player::play(Step const& step) {
    switch (step.kind) {
        case Step::Kind::type:
            type(step.text);
            break;
        case Step::Kind::connect:
            client_ = std::make_unique<support::StationClient>();
            break;
        case Step::Kind::send:
            send(step.text);
            break;
        case Step::Kind::wait:
            console_.wait_for(step.text);
            break;
        case Step::Kind::control:
            console_.control(step.text);
            break;
    }
}

void Player::leave() {
    switch (session_.exit) {
        case Exit::by_itself:
            break;
        case Exit::operator_x:
            type("x\n");
            break;
        case Exit::operator_0:
            type("0\n");
            break;
        case Exit::client_first:
            send("x\n");
            console_.wait_for("Entered Option = x\n");
            type("x\n");
            break;
    }
}

void Player::type(std::string const& text) {
    typed_ += text;
    console_.type(text);
}

void Player::send(std::string const& text) {
    sent_ += text;
    client_->send(text);
}

std::string Player::received() {
    constexpr std::size_t kMoreThanThereIs = 1 << 20;
    return client_ ? client_->receive(kMoreThanThereIs) : "";
}

}  // namespace proof
