module errors(input clk, input a, output reg [1:0] o, output w);
  always @(posedge clk) o[0] <= a;
  always @* w = o[1] & missing(a);
  absent u_absent (.clk(clk));
  part u_part (.a(a), .zz(1'b1));
endmodule
module part(input a);
endmodule
