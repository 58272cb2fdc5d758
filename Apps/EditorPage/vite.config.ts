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
  // The test runner's own server listens on the loopback by address: a bare system may have no /etc/hosts
  // to name "localhost".
  server: { host: '127.0.0.1' },
  test: {
    include: ['tests/**/*.test.ts'],
    testTimeout: 120000,
    hookTimeout: 60000,
  },
});
