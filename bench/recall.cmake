# How much of what was deleted comes back, over databases whose truth is known.
add_executable(recall recall.cpp recall/FreeSpaceMap.cpp recall/LinkFigures.cpp
    recall/RecallCase.cpp)
target_link_libraries(recall PRIVATE salvor_app salvor_sample salvor_test_support CLI11::CLI11 salvor_options)
