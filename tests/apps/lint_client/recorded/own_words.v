module own_words(input a);
  if (1) $warning("first line\nsecond: line\n  third line");
  if (1) $info("for your information");
  if (1) $error("it's wrong: 'a' is %0d", 5);
endmodule
