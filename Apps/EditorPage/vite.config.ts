// The page is served by `vantel edit` from the folder the build names (VANTEL_PAGE_OUT, else dist).
import { defineConfig } from 'vitest/config';

export default defineConfig({
  base: '/',
  build: {
    outDir: process.env.VANTEL_PAGE_OUT ?? 'dist',
    emptyOutDir: true,
    assetsDir: 'assets',
    target: 'es2022',
    reportCompressedSize: false,
  },
  test: {
    include: ['tests/**/*.test.ts'],
    testTimeout: 120000,
    hookTimeout: 60000,
  },
});
