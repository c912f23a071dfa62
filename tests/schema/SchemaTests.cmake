# Every example and test document validates against the document schema, and the documents meant
# to be broken are refused at their line.
add_test(NAME DocumentsMatchSchema
  COMMAND ${CMAKE_COMMAND} -DSOURCE_ROOT=${PROJECT_SOURCE_DIR} -DSCHEMA=${PROJECT_SOURCE_DIR}/schema/prog-config.xsd
    -P ${CMAKE_CURRENT_LIST_DIR}/ValidateDocuments.cmake)
set_tests_properties(DocumentsMatchSchema PROPERTIES TIMEOUT 120 SKIP_REGULAR_EXPRESSION "SKIPPED: ")
