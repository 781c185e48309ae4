// What the processor sees: data, status and control.
module registers (
    input  wire        clk,
    input  wire        rst_n,
    input  wire        select,
    input  wire        write,
    input  wire [3:0]  address,
    input  wire [31:0] write_data,
    output reg  [31:0] read_data,
    output reg         push,
    output reg         pop,
    output reg  [7:0]  push_data,
    output reg         fast,
    output wire        interrupt,
    input  wire [7:0]  pop_data,
    input  wire        rx_empty,
    input  wire        tx_full,
    input  wire        framing_error
);

    localparam [3:0] DATA    = 4'h0;
    localparam [3:0] STATUS  = 4'h4;
    localparam [3:0] CONTROL = 4'h8;
    localparam [3:0] VERSION = 4'hC;

    reg [3:0] status;
    reg       enable_interrupt;

    assign interrupt = enable_interrupt && !rx_empty;

    always @(*) begin
        status = {1'b0, framing_error, tx_full, rx_empty};
        casez (address)
            DATA:    read_data = {24'd0, pop_data};
            STATUS:  read_data = {27'd0, status};
            4'b?000: read_data = {30'd0, enable_interrupt, fast};
            CONTROL: read_data = 32'd0;
            default: read_data = 32'd0;
        endcase
    end

    always @(posedge clk or negedge rst_n) begin
        if (!rst_n) begin
            push             <= 1'b0;
            pop              <= 1'b0;
            push_data        <= 8'd0;
            fast             <= 1'b0;
            enable_interrupt <= 1'b0;
        end else begin
            push <= select && write && address == DATA;
            pop  <= select && !write && address == DATA;
            if (select && write) begin
                push_data <= write_data[8:0];
                if (address == CONTROL) begin
                    fast             <= write_data[0];
                    enable_interrupt <= write_data[1];
                end
            end
        end
    end

    // A framing error keeps the fast clock off.
    always @(posedge framing_error)
        fast <= 1'b0;

endmodule
