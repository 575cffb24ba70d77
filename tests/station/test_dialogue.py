"""What Console makes of peers that say what no console says."""

import pytest

from r47_station import Console, ConnectionLost, DialogueTimeout, UnexpectedReply

CHECK = (b"A\n", b"64;\\n")


def connect(port, **options):
    return Console("127.0.0.1", port, **{"timeout": 60.0, "patience": 60.0, **options})


def test_wrong_echo_is_told_with_what_was_sent_and_came(peer):
    console = connect(peer([CHECK, (b"a\nh\n4\n", b"5")]))
    with pytest.raises(UnexpectedReply) as failure:
        console.set_pin(4, True)
    assert (failure.value.menu, failure.value.sent, failure.value.received) == ("digital I/O", "a\nh\n4\n", "5")
    assert "the echo of 4" in str(failure.value) and "digital I/O" in str(failure.value)


@pytest.mark.parametrize("reply", [b"1\\n", b"x;\\n", b";\\n", b"1;2;\\n", b"\\n", b"64;\\n", b"1;\\n2", b"-1;\\n"])
def test_reply_that_is_none_is_refused(peer, reply):
    console = connect(peer([CHECK, (b"a\np\n", reply)]))
    with pytest.raises(UnexpectedReply):
        console.pins()


def test_failure_is_raised_again_by_each_later_command(peer):
    console = connect(peer([CHECK, (b"a\np\n", b"64;\\n")]))
    with pytest.raises(UnexpectedReply) as first:
        console.pins()
    with pytest.raises(UnexpectedReply) as second:
        console.button_level()
    assert second.value is first.value


def test_reply_that_comes_in_pieces_is_put_together(peer):
    console = connect(peer([CHECK, (b"a\n", b"6"), (b"p\n", b"3;\\"), (b"", b"n")]))
    assert console.pins() == [True] * 6
    console.close()


def test_items_of_others_come_in_front_of_the_first_reply(peer):
    with connect(peer([(b"A\n", b"0;-1;64;\\n")])) as console:
        assert console.foreign_items == [0, -1]
        assert console.first_check == 64


def test_items_of_nobody_are_refused_later(peer):
    console = connect(peer([CHECK, (b"A\n", b"0;64;\\n")]))
    with pytest.raises(UnexpectedReply, match="1 items and 0 that waited"):
        console.check_device()


def test_silence_is_a_timeout_with_what_was_sent(peer):
    console = connect(peer([CHECK, (b"t\nr\n", b"")]))
    console.timeout = 0.05
    with pytest.raises(DialogueTimeout) as failure:
        console.button_level()
    assert (failure.value.menu, failure.value.sent, failure.value.received) == ("button", "t\nr\n", "")


def test_console_that_serves_another_client_is_a_timeout(peer):
    with pytest.raises(DialogueTimeout):
        connect(peer([(b"A\n", b"")]), timeout=0.05)


def test_connection_that_no_console_takes_is_tried_again(peer):
    with connect(peer([], [], [CHECK])) as console:
        assert console.first_check == 64


def test_patience_ends(peer):
    with pytest.raises(ConnectionLost):
        Console("127.0.0.1", 1, patience=0.0)
