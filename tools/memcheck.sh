# Sourced by ./test: runs tests under valgrind's memcheck.

# The folders whose tests need no window.
memcheck_folders='files|records|music|suite|model|content|storage|voice|export'

# Under memcheck the one hears another exit code of its children, and the other is too slow for the
# server that it holds to account.
memcheck_spared='^content\.Content(Roots|Server)Test$'

# run_memcheck [pattern]: every test of these folders, or those whose names match. Fails if one of
# them does, reads what nobody wrote, or loses memory. What was found stands in the log of each,
# under build/dev/Testing/Temporary.
run_memcheck() {
    local tree="$root/build/dev" pattern=${1:-"^($memcheck_folders)\\."}
    cat >"$tree/DartConfiguration.tcl" <<END
SourceDirectory: $root
BuildDirectory: $tree
MemoryCheckCommand: $(command -v valgrind)
MemoryCheckCommandOptions: --quiet --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite --error-exitcode=99 --num-callers=25 --child-silent-after-fork=yes --suppressions=$root/tools/memcheck.supp
END
    # Some thirty times as slow as without it, of which Qt Test must not make a hang.
    (cd "$tree" && QTEST_FUNCTION_TIMEOUT=7200000 nice ctest -T MemCheck --timeout 7200 \
        --output-on-failure -R "$pattern" -E "\.es_AR$|$memcheck_spared")
}
