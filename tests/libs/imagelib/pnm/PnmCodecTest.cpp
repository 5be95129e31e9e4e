// Tests for the Pnm codec come with its implementation.
