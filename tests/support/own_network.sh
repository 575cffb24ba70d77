#!/bin/sh
# Runs a command in a network of its own: the console's port is fixed, and tests run in parallel. Where the host allows no
# network namespaces, at a loopback address of its own (own_loopback.cpp); what cannot do with that looks at R47_LOOPBACK.
# R47_OWN_LOOPBACK is where that library is, when it is not beside the command; empty: not even that can be, skip.
own_network="bwrap --unshare-user-try --unshare-net --cap-add CAP_NET_ADMIN --dev-bind / / --die-with-parent --"
if $own_network true 2>/dev/null; then
    exec $own_network "$@"
fi
if [ "${R47_OWN_LOOPBACK-any}" = "" ]; then
    echo "needs a network of its own, and this host allows no network namespaces"
    exit 77
fi
export R47_LOOPBACK="127.$((64 + $$ / 65536)).$(($$ / 256 % 256)).$(($$ % 256))"
LD_PRELOAD=${R47_OWN_LOOPBACK-$(dirname "$1")/libown_loopback.so} exec "$@"
