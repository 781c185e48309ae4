// Sends bytes: a start bit, eight data bits, a stop bit.
module uart_tx (
    input  wire       clk,
    input  wire       rst_n,
    input  wire       tick,
    input  wire       valid,
    input  wire [7:0] data,
    output reg        ready,
    output reg        txd
);

    localparam [1:0] IDLE  = 2'd0;
    localparam [1:0] START = 2'd1;
    localparam [1:0] BITS  = 2'd2;
    localparam [1:0] STOP  = 2'd3;

    reg [1:0] state;
    reg [3:0] phase;
    reg [2:0] index;
    reg [7:0] shifter;

    always @(posedge clk or negedge rst_n) begin
        if (!rst_n) begin
            state <= IDLE;
            phase <= 4'd0;
            index <= 3'd0;
        end else begin
            if (state == IDLE && valid) begin
                shifter <= data;
                state   <= START;
                phase   <= 4'd0;
            end else if (tick) begin
                phase <= phase + 4'd1;
                if (phase == 4'd15) begin
                    case (state)
                        START: state <= BITS;
                        BITS: begin
                            shifter <= {1'b0, shifter[7:1]};
                            index   <= index + 3'd1;
                            if (index == 3'd7)
                                state <= STOP;
                        end
                        STOP: state <= IDLE;
                    endcase
                end
            end
        end
    end

    always @(*) begin
        ready = (state == IDLE);
        if (state == IDLE)
            txd = 1'b1;
        else if (state == START)
            txd = 1'b0;
        else if (state == BITS)
            txd = shifter[0];
    end

endmodule
