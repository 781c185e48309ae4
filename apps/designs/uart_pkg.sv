// What the board sends to the serial port.
`include "board.vh"

package uart_pkg;
  typedef struct packed {
    logic                  write;
    logic [3:0]            address;
    logic [`DATA_BITS-1:0] data;
  } request_t;
endpackage
