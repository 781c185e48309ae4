`timescale 1ns / 1ps
`define DEPTH 4
`define DEPTH 5
module warnings #(
    parameter UNUSED_WIDTH = 3
) (
    input clk,
    input rst_n,
    input [7:0] data,
    input [1:0] select,
    output reg [3:0] narrow,
    output reg latched,
    output wire [0:7] ascending,
    output reg mixed,
    output reg clocked,
    output reg twice,
    output wide,
    output negative,
    output [31:0] rounded,
    output beyond
);
  wire nobody;
  reg never;
  genvar index;
  always @(posedge clk) begin
    narrow <= data;
    clocked = select[0];
  end
  always @* if (select[0]) latched = data[0];
  always @* begin
    casex (select)
      2'b0x: mixed <= 1'b1;
      2'b01: mixed <= 1'b0;
      default: mixed <= nobody;
    endcase
  end
  always @(posedge clk) twice <= data[0];
  always @(negedge clk) twice <= data[1];
  assign ascending = data;
  assign wide = (select > 2'd3);
  assign negative = (select < 0);
  assign rounded = 2.5;
  assign beyond = data[9];
  part part_a (.a(select[0]), .b(implied), .c());
  part part_b (.a(select), .b(2'd0), .c(), .d(1'b0));
  always @(posedge clk or negedge rst_n) if (!rst_n) never <= 0; else never <= data[0];
  reg also;
  always @(posedge clk) if (!rst_n) also <= 0; else also <= data[0];
  function automatic f(input i); reg data; begin data = i; f = data; end endfunction
  wire late;
  assign #5 late = f(select[0]);
  initial begin #10 ; also <= 1; end
  reg [7:0] memory [0:15];
  wire [7:0] word = memory[select];
endmodule
module part(input a, input [1:0] b, output [3:0] c, input d);
  assign c = {3'b0, a};
endmodule
