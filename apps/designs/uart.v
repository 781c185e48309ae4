// A serial port with queues in both directions and three registers.
module uart (
    input  wire        clk,
    input  wire        rst_n,
    input  wire        select,
    input  wire        write,
    input  wire [3:0]  address,
    input  wire [31:0] write_data,
    output wire [31:0] read_data,
    output wire        interrupt,
    input  wire        rxd,
    output wire        txd
);

    wire       tick;
    wire       fast;
    wire       push;
    wire       pop;
    wire [7:0] push_data;
    wire [7:0] pop_data;
    wire [7:0] tx_data;
    wire [7:0] rx_data;
    wire       tx_ready;
    wire       tx_empty;
    wire       tx_full;
    wire       rx_valid;
    wire       rx_empty;
    wire       framing_error;

    baud_gen u_baud (
        .clk   (clk),
        .rst_n (rst_n),
        .fast  (fast),
        .tick  (tick)
    );

    sync_fifo u_tx_fifo (
        .clk         (clk),
        .rst_n       (rst_n),
        .push        (push),
        .push_data   (push_data),
        .pop         (tx_ready),
        .pop_data    (tx_data),
        .empty       (tx_empty),
        .full        (tx_full),
        .almost_full ()
    );

    uart_tx u_tx (
        .clk   (clk),
        .rst_n (rst_n),
        .tick  (tick),
        .valid (!tx_empty),
        .data  (tx_data),
        .ready (tx_ready),
        .txd   (txd)
    );

    uart_rx u_rx (
        .clk           (clk),
        .rst_n         (rst_n),
        .tick          (tick),
        .rxd           (rxd),
        .valid         (rx_valid),
        .data          (rx_data),
        .framing_error (framing_error)
    );

    sync_fifo #(.DEPTH(32)) u_rx_fifo (
        .clk       (clk),
        .rst_n     (rst_n),
        .push      (rx_vaild),
        .push_data (rx_data),
        .pop       (pop),
        .pop_data  (pop_data),
        .empty     (rx_empty),
        .full      ()
    );

    registers u_registers (
        .clk           (clk),
        .rst_n         (rst_n),
        .select        (select),
        .write         (write),
        .address       (address),
        .write_data    (write_data),
        .read_data     (read_data),
        .push          (push),
        .pop           (pop),
        .push_data     (push_data),
        .fast          (fast),
        .interrupt     (interrupt),
        .pop_data      (pop_data),
        .rx_empty      (rx_empty),
        .tx_full       (tx_full),
        .framing_error (framing_error)
    );

endmodule
