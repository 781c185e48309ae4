# SPDX-License-Identifier: Apache-2.0
# The warnings that every hand-written source compiles without.

set(VOK_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
