// Tests of the characters that are typed: whose they are.
#include "app/typed_characters.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// Makes a pipe with this character in it the file of descriptor 0.
void put_in_place_of_standard_input(char c) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], &c, 1), 1);
    ASSERT_EQ(::dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
}

// Both are files of the same system, and only the first is the terminal.
TEST(TypedCharactersTest, AnotherFileInThePlaceOfTheTerminalIsNotRead) {
    put_in_place_of_standard_input('a');
    typed_characters characters;
    typed_event const typed = characters.peek_at_once();
    EXPECT_EQ(typed.kind, typed_event::character);
    EXPECT_EQ(typed.c, 'a');
    characters.drop();
    EXPECT_EQ(characters.peek_at_once().kind, typed_event::nothing_yet);
    put_in_place_of_standard_input('b');
    EXPECT_EQ(characters.peek_at_once().kind, typed_event::ended);
}

}  // namespace
