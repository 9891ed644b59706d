set(costmap_2d_INCLUDE_DIRS ${CMAKE_CURRENT_LIST_DIR}/../../../costmap_2d/include)
set(costmap_2d_LIBRARIES ${CMAKE_CURRENT_LIST_DIR}/../../../lib/libcostmap_2d.so)
