// A queue between two parts that share a clock.
module sync_fifo #(
    parameter WIDTH = 8,
    parameter DEPTH = 16
) (
    input  wire             clk,
    input  wire             rst_n,
    input  wire             push,
    input  wire [WIDTH-1:0] push_data,
    input  wire             pop,
    output wire [WIDTH-1:0] pop_data,
    output wire             empty,
    output wire             full,
    output wire             almost_full
);

    reg [WIDTH-1:0] memory [0:DEPTH-1];
    reg [3:0]       head;
    reg [3:0]       tail;
    reg [4:0]       level;
    reg [4:0]       high_mark;

    wire do_push = push && !full;
    wire do_pop  = pop && !empty;

    assign pop_data = memory[tail];
    assign empty    = (level == 5'd0);
    assign full     = (level >= DEPTH[4:0]);

    always @(posedge clk or negedge rst_n) begin
        if (!rst_n) begin
            head  <= 4'd0;
            tail  <= 4'd0;
            level <= 5'd0;
        end else begin
            if (do_push) begin
                memory[head] <= push_data;
                head         <= head + 1;
            end
            if (do_pop)
                tail <= tail + 4'd1;
            level <= level + do_push - do_pop;
        end
    end

    // The highest level so far, for tuning the depth.
    always @(posedge clk) begin
        if (!rst_n)
            high_mark <= 5'd0;
        else if (level > high_mark)
            high_mark <= level;
    end

endmodule
