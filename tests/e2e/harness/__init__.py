# Vantorel. MIT licence, see LICENSE.
# What the end-to-end cases stand on: a private desktop, a private home, and hands and eyes for the shell.
