// SPDX-License-Identifier: Apache-2.0

// The client in Java. interop_test.py says what it does.

import com.google.protobuf.CodedOutputStream;
import com.google.protobuf.InvalidProtocolBufferException;
import com.google.protobuf.Message;
import java.io.IOException;
import java.util.HexFormat;
import java.util.Scanner;

public final class Client {
  private static final HexFormat HEX = HexFormat.of();

  private static String copy(String type, byte[] data) throws ReflectiveOperationException {
    Class<?> generated = Class.forName("ui.vok.rulecheck.pb.RuleService$" + type);
    Message instance = (Message) generated.getMethod("getDefaultInstance").invoke(null);
    Message message;
    try {
      message = instance.getParserForType().parsePartialFrom(data);
    } catch (InvalidProtocolBufferException error) {
      return "unreadable: " + error;
    }
    try {
      byte[] bytes = new byte[message.getSerializedSize()];
      CodedOutputStream out = CodedOutputStream.newInstance(bytes);
      out.useDeterministicSerialization();
      message.writeTo(out);
      return HEX.formatHex(bytes);
    } catch (IOException | RuntimeException error) {
      return "unwritable: " + error;
    }
  }

  public static void main(String[] arguments) throws ReflectiveOperationException {
    Scanner lines = new Scanner(System.in);
    while (lines.hasNextLine()) {
      String[] words = lines.nextLine().split(" ");
      System.out.println(copy(words[0], HEX.parseHex(words.length > 1 ? words[1] : "")));
    }
  }
}
