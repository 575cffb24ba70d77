#!/bin/sh
# Runs a command in a network of its own: the console's port is fixed, and tests run in parallel.
exec bwrap --unshare-user-try --unshare-net --cap-add CAP_NET_ADMIN --dev-bind / / --die-with-parent -- "$@"
