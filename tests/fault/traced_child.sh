#!/bin/sh
# Stands in the place of a program's child and starts what the environment says in front of the true one.
eval "exec $TAVEK_TRACED \"\$@\""
