// Every dialogue, cut after each of its answers by each of the ends that a dialogue can meet: the command that asks
// ends at its question, and the menu goes on.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/menus/dialogues.h"
#include "tests/support/console_session.h"

namespace {

using namespace dialogues;
using namespace screens;
using support::ConsoleSession;
using support::SessionOptions;
using support::StationClient;

constexpr char const* kControlD = "\x04";
std::string const kOperatorsX = "\t\t Your Option = x\n";

// The terminal echoes nothing and leaves line ends alone, so that the output is what the console prints.
SessionOptions at_a_plain_terminal() {
    SessionOptions options = support::in_shell("stty -echo -onlcr && exec \"$@\"");
    options.terminal = true;
    return options;
}

SessionOptions in_socket_mode(SessionOptions options = {}) {
    options.arguments = {"socket"};
    return options;
}

// One dialogue, which its `answered`-th question ends.
struct Cut {
    Dialogue const& dialogue;
    std::size_t answered;

    Menu const& menu() const { return dialogue.menu; }
    std::vector<Question> answered_questions() const {
        auto const begin = dialogue.questions.begin();
        return {begin, begin + static_cast<std::ptrdiff_t>(answered)};
    }
    Question const& last() const { return dialogue.questions[answered]; }

    SessionOptions with_clock(SessionOptions const& options = {}) const { return menus::options_for(menu(), options); }

    std::string typed() const {
        std::string text = std::string{menu().key, '\n', dialogue.key, '\n'};
        for (Question const& question : answered_questions()) {
            text += question.answer + "\n";
        }
        return text;
    }

    // From the menu's first screen up to the question.
    std::string printed() const {
        std::string text = menu().screen(dialogue.key);
        for (Question const& question : answered_questions()) {
            text += question.printed;
        }
        return text + last().printed;
    }

    std::string left() const { return menu().screen('x') + menu().goodbye; }

    // As printed(), with a client.
    std::string printed_with_client() const {
        std::string text = screen_with_client(menu(), dialogue.key);
        for (Question const& question : answered_questions()) {
            text += question.printed + (question.to_the_client ? line_from_client(question.answer) : "");
        }
        return text + last().printed;
    }

    // What the client got back of its answers.
    std::string echoes() const {
        std::string text;
        for (Question const& question : answered_questions()) {
            text += question.to_the_client ? question.answer : "";
        }
        return text;
    }

    Calls calls_until_left() const {
        Calls calls = menu().opening;
        for (Question const& question : answered_questions()) {
            calls = calls + question.calls;
        }
        return calls + last().calls + menu().closing;
    }
    Calls all_calls() const { return calls_until_left() + menu().ending; }
};

// A client and an operator who hold the dialogue up to its cut.
class DialogueWithClient {
public:
    DialogueWithClient(Cut const& cut, SessionOptions const& options) : session(cut.with_clock(options)) {
        session.wait_for(main_menu());
        client.send(std::string{cut.menu().key, '\n'});
        session.wait_for(cut.menu().prompt());
        say(cut.menu().is(client_driven), std::string{cut.dialogue.key});
        session.wait_for(cut.menu().echo + cut.dialogue.key + "\n");
        for (Question const& question : cut.answered_questions()) {
            session.wait_for(question.printed);
            say(question.to_the_client, question.answer);
        }
        session.wait_for(cut.last().printed);
        EXPECT_EQ(client.receive(cut.echoes().size()), cut.echoes());
    }
    // Nothing of the port is held for the next one.
    ~DialogueWithClient() { client.reset(); }
    DialogueWithClient(DialogueWithClient const&) = delete;
    DialogueWithClient& operator=(DialogueWithClient const&) = delete;

    ConsoleSession session;
    StationClient client;

private:
    void say(bool by_client, std::string const& line) {
        if (by_client) {
            client.send(line + "\n");
        } else {
            session.type(line + "\n");
        }
    }
};

class CutDialogueTest : public testing::TestWithParam<Dialogue> {
protected:
    template <typename Expect>
    void after_each_answer(Expect expect) {
        for (std::size_t answered = 0; answered < GetParam().questions.size(); ++answered) {
            SCOPED_TRACE(testing::Message() << "after " << answered << " answers");
            expect(Cut{GetParam(), answered});
        }
    }
};

TEST_P(CutDialogueTest, EndOfInput) {
    after_each_answer([](Cut const& cut) {
        ConsoleSession session(cut.with_clock());
        session.type(cut.typed());
        session.end_input();
        std::string expected = output_before(cut.menu()) + cut.printed() + cut.left();
        if (cut.menu().is(ends_the_console)) {
            EXPECT_EQ(session.wait_for_exit(), 0);
            EXPECT_EQ(session.output(), expected);
        } else {
            expected += main_menu('\0');  // from here on without end
            session.wait_for(main_menu('\0'));
            EXPECT_EQ(session.output().substr(0, expected.size()), expected);
        }
        EXPECT_EQ(session.calls(), cut.calls_until_left());
    });
}

TEST_P(CutDialogueTest, ControlD) {
    after_each_answer([](Cut const& cut) {
        ConsoleSession session(cut.with_clock(at_a_plain_terminal()));
        session.wait_for(main_menu());
        session.type(cut.typed() + kControlD + "x\n");
        std::string expected = output_before(cut.menu()) + cut.printed() + cut.left();
        if (!cut.menu().is(ends_the_console)) {
            session.type("x\n");
            expected += main_menu('x');
        }
        EXPECT_EQ(session.wait_for_exit(), 0);
        EXPECT_EQ(session.output(), expected);
        EXPECT_EQ(session.calls(), cut.all_calls());
    });
}

TEST_P(CutDialogueTest, ClientGone) {
    after_each_answer([](Cut const& cut) {
        DialogueWithClient run(cut, in_socket_mode());
        run.client.finish();
        std::string expected = output_before_with_client(cut.menu()) + cut.printed_with_client() + cut.left();
        if (!cut.menu().is(ends_the_console)) {
            run.session.wait_for("Entered Option = x\n");
            run.session.type("x\n");
            expected += main_menu('x') + kOperatorsX;
        }
        EXPECT_EQ(run.session.wait_for_exit(), 0);
        EXPECT_EQ(run.session.output(), expected);
        EXPECT_EQ(run.session.calls(), cut.all_calls());
        EXPECT_TRUE(run.client.ended());
    });
}

// The client has keys and questions: the terminal is the local menu's.
bool local_menu_has_the_terminal(Dialogue const& dialogue) {
    return dialogue.menu.is(client_driven) && dialogue.questions[0].to_the_client;
}

class CutBesideTheLocalMenuTest : public CutDialogueTest {};

TEST_P(CutBesideTheLocalMenuTest, OperatorEndsTheMode) {
    after_each_answer([](Cut const& cut) {
        DialogueWithClient run(cut, in_socket_mode());
        run.session.type("x\n");
        EXPECT_EQ(run.session.wait_for_exit(), 0);
        EXPECT_EQ(run.session.output(), output_before_with_client(cut.menu()) + cut.printed_with_client() +
                                            kOperatorsX + cut.left() + main_menu('x'));
        EXPECT_EQ(run.session.calls(), cut.all_calls());
        EXPECT_TRUE(run.client.ended());
    });
}

class CutAtTheTerminalTest : public CutDialogueTest {};

// Also where the answer is the client's.
TEST_P(CutAtTheTerminalTest, ControlDWithAClient) {
    after_each_answer([](Cut const& cut) {
        DialogueWithClient run(cut, in_socket_mode(at_a_plain_terminal()));
        run.session.type(kControlD);
        run.session.wait_for(cut.menu().prompt());
        if (cut.menu().is(client_driven)) {
            run.client.send("x\n");
        } else {
            run.session.type("x\n");
        }
        std::string expected = output_before_with_client(cut.menu()) + cut.printed_with_client() +
                               screen_with_client(cut.menu(), 'x') + cut.menu().goodbye;
        if (!cut.menu().is(ends_the_console)) {
            run.client.send("A\nx\n");
            EXPECT_EQ(run.client.receive_reply(), "0;\\n");  // no item waited for it
            run.session.wait_for("Entered Option = x\n");
            run.session.type("x\n");
            expected += main_menu_of_client('A') + "File Error Code: 0\n" + main_menu_of_client('x') + kOperatorsX;
        }
        EXPECT_EQ(run.session.wait_for_exit(), 0);
        EXPECT_EQ(run.session.output(), expected);
        EXPECT_EQ(run.session.calls(), cut.all_calls());
        EXPECT_TRUE(run.client.ended());
    });
}

// A question to the client, while the terminal's input ends or Ctrl-D is typed at the local menu.
class ClientQuestionTest : public testing::Test {
protected:
    static Dialogue dialogue(std::string const& name) {
        std::vector<Dialogue> const every = all();
        return *std::find_if(every.begin(), every.end(), [&](Dialogue const& one) { return one.name == name; });
    }
};

TEST_F(ClientQuestionTest, EndOfInputLeavesItToTheClient) {
    Dialogue const rate = dialogue("CameraRate");
    DialogueWithClient run(Cut{rate, 0}, in_socket_mode());
    run.session.end_input();
    run.client.send("25\n");
    run.session.wait_for("sensor set  fps: 25\n");
    run.client.send("x\nx\n");
    EXPECT_EQ(run.session.wait_for_exit(), 0);
}

TEST_F(ClientQuestionTest, EndOfInputLeavesTheMenuThatReadsTheTerminalBehindIt) {
    Dialogue const rate = dialogue("RtuTrigger");
    DialogueWithClient run(Cut{rate, 0}, in_socket_mode());
    run.session.end_input();
    run.client.send("25\n");
    run.session.wait_for("sensor set  fps: 25\n" + rtu_menu('x') + main_menu());
    run.client.send("x\n");
    EXPECT_EQ(run.session.wait_for_exit(), 0);
    EXPECT_EQ(run.session.calls(), (Calls{"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(25) = 0"}));
}

TEST_F(ClientQuestionTest, EndOfInputEndsTheCommandAndTheClientGoesOn) {
    Dialogue const gain = dialogue("CameraGain");
    Cut const cut{gain, 0};
    DialogueWithClient run(cut, in_socket_mode());
    run.session.end_input();
    run.session.wait_for(cut.menu().prompt());
    run.client.send("x\nA\n");
    EXPECT_EQ(run.client.receive_reply(), "0;\\n");
    run.client.send("x\n");
    EXPECT_EQ(run.session.wait_for_exit(), 0);
    EXPECT_EQ(run.session.calls(), cut.all_calls());
}

TEST_F(ClientQuestionTest, ControlDShowsTheLocalMenuAgain) {
    Dialogue const rate = dialogue("CameraRate");
    DialogueWithClient run(Cut{rate, 0}, in_socket_mode(at_a_plain_terminal()));
    run.session.type(kControlD);
    run.session.wait_for(socket_menu('\0').substr(kSocketMenu.size()) + kSocketMenu);
    run.client.send("25\n");
    run.session.wait_for("sensor set  fps: 25\n");
    run.session.type("x\n");
    EXPECT_EQ(run.session.wait_for_exit(), 0);
}

std::vector<Dialogue> all_where(bool local_menus_terminal) {
    std::vector<Dialogue> some;
    for (Dialogue const& dialogue : all()) {
        if (local_menu_has_the_terminal(dialogue) == local_menus_terminal) {
            some.push_back(dialogue);
        }
    }
    return some;
}

std::string name_of(testing::TestParamInfo<Dialogue> const& dialogue) {
    return dialogue.param.name;
}

INSTANTIATE_TEST_SUITE_P(Every, CutDialogueTest, testing::ValuesIn(all()), name_of);
INSTANTIATE_TEST_SUITE_P(Every, CutBesideTheLocalMenuTest, testing::ValuesIn(all_where(true)), name_of);
INSTANTIATE_TEST_SUITE_P(Every, CutAtTheTerminalTest, testing::ValuesIn(all_where(false)), name_of);

}  // namespace
