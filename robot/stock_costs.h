#ifndef CONTROLLER_BASE_ROBOT_STOCK_COSTS_H_
#define CONTROLLER_BASE_ROBOT_STOCK_COSTS_H_

#include <cstdint>
#include <vector>

namespace controller_base::robot {

// Cost bytes of the stock navigation stack, as this library reads cost bytes.
//
//   stock   0 ... 252, rising with nearness     253   254   255    inscribed, lethal, unknown
//   here    1 ... 93, 94 ... 127 in the ring    253   254   255
//
// The library compares cost bytes as signed numbers, so 128 to 252 would count as free. And its shortcut smoother sees
// an obstacle only through the bytes 94 to 127. The ring is every cell that touches a cell of 253 or more, corners
// included: it is closed however steep the stock inflation is, also where there is none, and no line that begins and
// ends outside crosses a cell of 253 or more. A search may enter the ring, and what was passable stays so.
//
// `stock` holds size_x * size_y bytes, one row after the other, and so does the result. `costs` is resized.
void ReadStockCosts(const std::uint8_t* stock, unsigned int size_x, unsigned int size_y,
                    std::vector<std::uint8_t>* costs);

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_STOCK_COSTS_H_
