#!/bin/sh
# Runs a command in a network of its own: the console's port is fixed, and tests run in parallel. Where the host allows no
# network namespaces, at a loopback address of its own (own_loopback.cpp); what cannot do with that looks at R47_LOOPBACK.
own_network="bwrap --unshare-user-try --unshare-net --cap-add CAP_NET_ADMIN --dev-bind / / --die-with-parent --"
if $own_network true 2>/dev/null; then
    exec $own_network "$@"
fi
export R47_LOOPBACK="127.$((64 + $$ / 65536)).$(($$ / 256 % 256)).$(($$ % 256))"
LD_PRELOAD=$(dirname "$1")/libown_loopback.so exec "$@"
