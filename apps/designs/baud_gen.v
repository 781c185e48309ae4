// Divides the clock down to one tick for each sixteenth of a bit.
module baud_gen #(
    parameter CLOCK_HZ = 50_000_000,
    parameter BAUD     = 115_200,
    parameter PARITY   = 0
) (
    input  wire       clk,
    input  wire       rst_n,
    input  wire       fast,
    output reg        tick
);

    localparam DIVIDER = CLOCK_HZ / (BAUD * 16);

    reg [4:0] count;
    wire      last;

    assign last = fast ? (count == DIVIDER / 2) : (count == DIVIDER);

    always @(posedge clk or negedge rst_n) begin
        if (!rst_n) begin
            count = 0;
            tick  <= 1'b0;
        end else begin
            count = last ? 5'd0 : count + 5'd1;
            tick  <= last;
        end
    end

endmodule
