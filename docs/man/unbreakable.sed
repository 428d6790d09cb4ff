# Keeps words with hyphens whole. groff may break a line after any hyphen, so
# "--input-dir" could end up as "--input-" and "dir" (".cflags 0 -" takes
# that away), and the man macros' .TH turns hyphenation back on after
# scdoc's ".nh" (so ".nh" again after it).
/^\.TH /a .nh\n.cflags 0 -
