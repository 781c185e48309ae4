module narrow (
    input        clk,
    input  [7:0] data,
    output reg [3:0] q
);
  wire forgotten;
  always @(posedge clk) q <= data;
  always @(negedge clk) q <= {3'd0, forgotten};
endmodule
