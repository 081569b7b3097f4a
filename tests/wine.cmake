# Tests run inside tools/with-wine, which gives prefix, display and registered DLLs.
add_test(NAME wine-is-up COMMAND sh -c "wine cmd /c exit 0 >/dev/null 2>&1")
set_tests_properties(wine-is-up PROPERTIES FIXTURES_SETUP wine)
set(QUORVEX_WINE_ENVIRONMENT "WINEDEBUG=-all")
