// Tests for the Png codec come with its implementation.
