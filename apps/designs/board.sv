// The serial port of a board, behind the board's bus.
`include "board.vh"

module board (
    input  logic                  clk,
    input  logic                  rst_n,
    input  logic                  select,
    input  uart_pkg::request_t    request,
    output logic [`DATA_BITS-1:0] read_data,
    input  logic                  rxd,
    output logic                  txd,
    output logic                  interrupt
);
    // For the next board.
    // verilator lint_off UNUSEDSIGNAL
    wire [3:0] spare = request.address;
    // verilator lint_on UNUSEDSIGNAL

    uart u_uart (
        .clk(clk),
        .rst_n(rst_n),
        .select(select),
        .write(request.write),
        .address(request.address),
        .write_data(request.data),
        .read_data(read_data),
        .interrupt(interrupt),
        .rxd(rxd),
        .txd(txd)
    );
endmodule
