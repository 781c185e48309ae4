// Receives bytes: samples each bit in its middle.
module uart_rx (
    input  wire       clk,
    input  wire       rst_n,
    input  wire       tick,
    input  wire       rxd,
    output reg        valid,
    output reg  [7:0] data,
    output reg        framing_error
);

    reg [1:0] sync;
    reg       busy;
    reg [3:0] phase;
    reg [3:0] index;
    reg [7:0] shifter;

    // Brings the line into this clock's domain.
    always @(posedge clk)
        sync <= {sync[0], rxd};

    always @(posedge clk or negedge rst_n) begin
        if (!rst_n) begin
            busy          <= 1'b0;
            valid         <= 1'b0;
            framing_error <= 1'b0;
            phase         <= 4'd0;
            index         <= 4'd0;
        end else begin
            valid <= 1'b0;
            if (!busy) begin
                busy  <= !sync[1];
                phase <= 4'd0;
                index <= 4'd0;
            end else if (tick) begin
                phase <= phase + 4'd1;
                if (phase == 4'd7) begin
                    index <= index + 4'd1;
                    if (index == 4'd9) begin
                        data          <= shifter;
                        valid         <= sync[1];
                        framing_error <= !sync[1];
                        busy          <= 1'b0;
                    end else begin
                        shifter <= {sync[1], shifter[7:1]};
                    end
                end
            end
        end
    end

endmodule
